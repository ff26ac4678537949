// A picture under given gains, put together line by line: its colours come as lines of floats and go as such, and are
// never all in memory.
#pragma once

#include <cstdint>
#include <utility>

#include "image/kiv_image.h"

class Progress;

// The colours of a picture, 1 or 3, as floats: 0 black, 1 white.
class ColourLines {
 public:
  virtual ~ColourLines() = default;

  // Writes line y of each colour. Called on several threads at once; doesn't throw.
  virtual void read(int y, float* const* colours) const = 0;
};

constexpr int mostColours = 3;

// Takes the lines of a result, in no order and on several threads at once; doesn't throw. Each colour's line may be
// changed; scratch has mostColours + 1 lines of the same width.
class ResultLines {
 public:
  virtual ~ResultLines() = default;
  virtual void write(int y, float* const* colours, float* const* scratch) = 0;
};

// What the equalizer works on: luminance, or each colour by itself.
struct Planes {
  int colours;  // 1 or 3
  bool luminance;

  int count() const { return luminance ? 1 : colours; }
};

// Lines of a picture with those of its planes.
class PlaneLines {
 public:
  // lines outlive the object.
  PlaneLines(const ColourLines& lines, Planes planes, int width) : lines_(lines), planes_(planes), width_(width) {}

  const Planes& planes() const { return planes_; }
  int width() const { return width_; }

  // Line y: three colours, grey standing for three equal ones, and the luminance, where it is worked on. The plane is
  // the one or the other.
  void read(int y, float* const* colours, float* luminance) const;
  const float* plane(int i, float* const* colours, const float* luminance) const {
    return planes_.luminance ? luminance : colours[i];
  }

 private:
  const ColourLines& lines_;
  Planes planes_;
  int width_;
};

// What becomes of a picture's planes. Called on several threads at once; doesn't throw.
class Look {
 public:
  virtual ~Look() = default;

  // How many lines are made ready at once, at most.
  virtual int bandRows() const = 0;

  // Of scratch for them, where a part of a picture is so wide; a multiple of 64.
  virtual std::int64_t scratchBytes(int width) const = 0;

  // Makes scratch ready for the lines of a part of the picture.
  virtual void prepare(const KivRect& part, void* scratch) const = 0;

  // Line i of that part of a plane, before and after; to may be before.
  virtual void line(int plane, int i, const KivRect& part, const float* before, float* to,
                    const void* scratch) const = 0;
};

// What becomes of the colours beside the look.
struct Finish {
  bool limited;  // by black and white: EqualizerKernels::addLimitedLine
  bool half;     // 0.5 is added to every sample
};

// Puts a part of the picture together, whose lines go by numbers from its own top. progress may be null, and gets
// linesWork of the part. Throws NO_MEMORY_ERROR, and Cancelled, before any line is written, and commits progress then.
void putTogether(const Look& look, const KivRect& part, const PlaneLines& lines, const Finish& finish,
                 ResultLines& result, Progress* progress);

// The same with the planes themselves for colours, as they are.
void putPlanesTogether(const Look& look, const KivRect& part, const PlaneLines& lines, ResultLines& result);

// What a pass over so many pixels costs, in taps.
double linesWork(IppiSize size);

// Bytes of scratch that putting together takes in each thread, beside the look's.
std::int64_t lineBytes(int width);

// A look of the picture's own size that is all there: its samples.
class WholeLook : public Look {
 public:
  explicit WholeLook(KivImage&& planes) : planes_(std::move(planes)) {}

  int bandRows() const override { return 16; }
  std::int64_t scratchBytes(int) const override { return 0; }
  void prepare(const KivRect&, void*) const override {}
  void line(int plane, int i, const KivRect& part, const float* before, float* to, const void* scratch) const override;

 private:
  KivImage planes_;
};
