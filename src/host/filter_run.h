// The filter run: host planes in, equalizer, host planes out; with the host's rectangles and the conversion of samples.
#pragma once

#include <cstdint>

#include "host/globals.h"
#include "host/ps_database.h"

class KivImage;

// The whole filter, on the planes 0 to 2 of the host's filter rectangle. Plane 2 stays in outData for the host, and the
// rectangles stay set. Reports through *globals->result:
//   memFullErr                no parameter record, or one whose block has no address
//   a descriptor's code       from the host's reader; no plane has been asked for
//   filterBadMode             fewer than three planes, or a depth other than 8, 16, 32; no rectangle has been set
//   a code of advanceState    the run stops there
//   errPlugInHostInsufficient no advanceState, or it delivered no buffer, or a row step below the row's length
// An empty or reversed rectangle is nothing to do. Throws NO_MEMORY_ERROR, before any plane was written. No thread
// outlives the call, so that the module can be unloaded.
void DoStart(Globals* globals);

// The host's points and rectangles, from gFilterRecord: the 32-bit members of bigDocumentData where the host set
// PluginUsing32BitCoordinates, else the 16-bit ones, which keep the low 16 bits of what is set.
VPoint GetImageSize();
VRect GetFilterRect();
VRect GetInRect();
void SetInRect(VRect rect);
VRect GetOutRect();
void SetOutRect(VRect rect);
VRect GetMaskRect();
void SetMaskRect(VRect rect);
VPoint GetFloatCoord();
VPoint GetWholeSize();

// Fills a one-plane view, over its own size, from db.inData at db.depthCode. An unknown code does nothing.
void ConvertFromPs(KivImage&& plane, PS_Database& db);
// Writes a one-plane view to db.outData. 8 and 16 bits saturate, 32 bits pass as they are.
void ConvertToPs(KivImage&& plane, PS_Database& db);

// Rows of samples between the host's types and floats, in single precision: dst = float(src) * scale, and
// dst = saturate(rint(src * scale)) with ties to even. A NaN, or a product that no 32-bit integer can hold, gives 0.
// Float and 16-bit steps are in elements, 8-bit steps in bytes. Exactly width samples a row are read and written; host
// rows need no alignment. Rows run in parallel on the default team; a height or width below 1 touches nothing.
void ConvertFromUint8Kiv(float* dst, const unsigned char* src, std::int32_t height, std::int32_t width,
                         std::int32_t srcStep, std::int32_t dstStep, float scale);
void ConvertFromUint16Kiv(float* dst, const unsigned short* src, std::int32_t height, std::int32_t width,
                          std::int32_t srcStep, std::int32_t dstStep, float scale);
void ConvertToUint8Kiv(unsigned char* dst, const float* src, std::int32_t height, std::int32_t width,
                       std::int32_t srcStep, std::int32_t dstStep, float scale);
void ConvertToUint16Kiv(unsigned short* dst, const float* src, std::int32_t height, std::int32_t width,
                        std::int32_t srcStep, std::int32_t dstStep, float scale);
