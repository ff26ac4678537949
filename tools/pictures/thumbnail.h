// The small picture in a file's EXIF, which file browsers and cameras show.
#pragma once

#include <vector>

#include "pictures/picture.h"

namespace orbel {

bool hasThumbnail(const Picture& picture);

// Where the picture carries a thumbnail, one of what it shows now takes its place: turned as the picture's samples are,
// in sRGB, without alpha, at most 160 pixels a side as in Exif 2.32. shown is the picture itself in memory, or a
// smaller copy. Throws Failure about the picture's file.
void renewThumbnail(const Picture& picture, const Picture& shown);

// A smaller copy of a picture that passes by in lines, large enough for a thumbnail to be made of it: means of squares,
// of some of their lines where these are many.
class SmallCopy {
 public:
  explicit SmallCopy(const Picture& picture);

  // The next lines, in order.
  void take(const orbel_picture& lines);

  // In memory, with the picture's types of samples and colour profile.
  Picture copy() const;

 private:
  const Picture picture_;
  int side_;  // of the squares
  int width_;
  int height_;
  int line_ = 0;
  std::vector<float> sums_;
};

}  // namespace orbel
