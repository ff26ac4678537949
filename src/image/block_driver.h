// Work on an image block by block: below 200 rows one block, else four of equal height (the last takes the rest), side
// by side on the threads of image/parallel.h; within a block, strips of at most 10 rows from top to bottom, so that a
// strip and its scratch stay in the cache. Blocks and strips are views. The result doesn't depend on the number of
// threads.
//
// An exception from a strip ends its block; once all blocks have ended it is thrown on to the caller (of several, the
// upper block's).
#pragma once

#include "image/kiv_image.h"

// Calls fn(strip of in, strip of out, user) for each strip. in and out have one size and may be the same image. fn runs
// on several blocks at once and touches no row outside its strips.
void DoMP(KivImage& in, KivImage& out, void (*fn)(KivImage& in, KivImage& out, void* user), void* user);
