// The door's pictures: whether they are any, and their lines as floats.
#pragma once

#include <cstdint>

#include "api/orbel.h"
#include "equalizer/look.h"
#include "image/sample_kernels.h"

// How samples of a picture become floats and come back.
struct Conversion {
  SampleKernels::Pair kernels;
  double toFloats;
  double fromFloats;
};

Conversion conversionOf(int samples);

int bytesOf(int samples);
int coloursOf(const orbel_picture& picture);
bool hasAlpha(const orbel_picture& picture);

// Throw Refusal; name is the picture's in messages. A shape may be without its samples.
orbel_picture requirePicture(const orbel_picture* picture, const char* name);
orbel_picture requireShape(const orbel_picture* picture, const char* name);

// Throws Refusal when size or channels differ, and when both begin at one address but lie in other ways.
void requireAlike(const orbel_picture& source, const orbel_picture& target);

// The line y of a channel.
inline unsigned char* lineOf(const orbel_picture& picture, int channel, int y) {
  return static_cast<unsigned char*>(picture.base[channel]) + y * picture.row_step;
}

// The line y of a channel, whatever its samples mean: both pictures are alike, and have samples of one type.
void copyLine(const orbel_picture& source, const orbel_picture& target, int channel, int y);

// The lines of a picture's channels as floats, in both directions.
class PictureLines : public ColourLines {
 public:
  explicit PictureLines(const orbel_picture& picture);
  void read(int y, float* const* colours) const override;
  void readChannel(int channel, int y, float* to) const;
  void writeChannel(int channel, int y, const float* from) const;
  const orbel_picture& picture() const { return picture_; }

 private:
  orbel_picture picture_;
  Conversion conversion_;
};
