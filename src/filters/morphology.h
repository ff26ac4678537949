// Extremes over a flat square, at a cost per sample that doesn't depend on its side, and the members of KivImage under
// any mask, which are documented there.
#pragma once

#include "image/kiv_image.h"

enum class Extreme { largest, smallest };

// Where a mask may lie: anywhere, its samples beyond the edge not counting, or only whole inside the source.
enum class MaskPlace { anywhere, insideOnly };

// target(x, y) = the extreme of src over the square of the given side (at least 1), for each plane of target. anywhere:
// the square is centred on (x, y), for an even side with one sample more to the right and below, and target and src
// have one size. insideOnly: its first sample is (x, y), and the target is side - 1 samples smaller. NaN samples don't
// count; where no sample counts, the result is src's at the middle of the square. target may be src.
void extremeUnderSquare(KivImage& target, const KivImage& src, int side, Extreme extreme, MaskPlace place);

// KivImage::Dilate and Erode.
void dilate(KivImage& target, const KivImage& src, const unsigned char* mask, int side, bool insideOnly);
void erode(KivImage& target, const KivImage& src, const unsigned char* mask, int side, bool insideOnly);
