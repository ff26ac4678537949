// Work on an image block by block: below 200 rows one block, else four of equal height (the last takes the rest), side
// by side on the runtime's default team; within a block, strips of at most 10 rows from top to bottom, so that a strip
// and its scratch stay in the cache. Blocks and strips are views. The result doesn't depend on the number of threads.
//
// An exception from a strip ends its block; once all blocks have ended it is thrown on to the caller (of several, the
// upper block's).
#pragma once

#include "host/ps_database.h"
#include "image/kiv_image.h"

// Calls fn(strip of in, strip of out, user) for each strip. in and out have one size and may be the same image. fn runs
// on several blocks at once and touches no row outside its strips.
void DoMP(KivImage& in, KivImage& out, void (*fn)(KivImage& in, KivImage& out, void* user), void* user);

// Fills image, which is shaped already, from db.inData: 0 to 1 at each depth, 16 bits as sample / 32768. toYuv converts
// three planes from RGB by the inverse of YUVtoRGB. Throws NO_MEMORY_ERROR, before anything is written, when scratch
// can't be had. Does nothing for an unknown db.depthCode, a null buffer, or planes that aren't db.interleave, 1 or 3.
void Pre(KivImage&& image, bool toYuv, PS_Database& db);

// Writes result to db.outData; both images serve as scratch and come back changed. In this order: yuvToRgb converts
// three planes by YUVtoRGB; doBlend with a blend below 1 limits result to 0 to 1 and makes it
// result * blend + base * (1 - blend); then the samples take the host's type (8 bits to nearest; 16 bits to nearest for
// one plane, towards zero for three). result and base have one size. Otherwise as Pre.
void Post(KivImage&& result, KivImage&& base, float blend, bool yuvToRgb, PS_Database& db, bool doBlend);
