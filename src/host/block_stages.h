// The first and the last stage of work on the host's buffers: in and out of an image, in the blocks and strips of
// image/block_driver.h, whose rules on threads and exceptions hold here too.
#pragma once

#include "host/ps_database.h"
#include "image/kiv_image.h"

// Fills image, which is shaped already, from db.inData: 0 to 1 at each depth, 16 bits as sample / 32768. toYuv converts
// three planes from RGB by the inverse of YUVtoRGB. Throws NO_MEMORY_ERROR, before anything is written, when scratch
// can't be had. Does nothing for an unknown db.depthCode, a null buffer, or planes that aren't db.interleave, 1 or 3.
void Pre(KivImage&& image, bool toYuv, PS_Database& db);

// Writes result to db.outData; both images serve as scratch and come back changed. In this order: yuvToRgb converts
// three planes by YUVtoRGB; doBlend with a blend below 1 limits result to 0 to 1 and makes it
// result * blend + base * (1 - blend); then the samples take the host's type (8 bits to nearest; 16 bits to nearest for
// one plane, towards zero for three). result and base have one size. Otherwise as Pre.
void Post(KivImage&& result, KivImage&& base, float blend, bool yuvToRgb, PS_Database& db, bool doBlend);
