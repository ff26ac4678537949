// A picture taken apart once and put together for any gains, line by line: its colours come as lines of floats and go
// as such, and are never all in memory.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "equalizer/plan.h"
#include "equalizer/pyramid.h"

class Progress;

// The colours of a picture, 1 or 3, as floats: 0 black, 1 white.
class ColourLines {
 public:
  virtual ~ColourLines() = default;

  // Writes line y of each colour. Called on several threads at once; doesn't throw.
  virtual void read(int y, float* const* colours) const = 0;
};

// Takes the lines of a result, in no order and on several threads at once; doesn't throw. Each colour's line has the
// picture's width and may be changed; scratch has the rows that were asked for.
class ResultLines {
 public:
  virtual ~ResultLines() = default;
  virtual int scratchRows() const { return 0; }  // at most BandStack::mostScratchRows
  virtual void write(int y, float* const* colours, float* const* scratch) = 0;
};

class BandStack {
 public:
  static constexpr int mostColours = 3;
  static constexpr int mostScratchRows = mostColours + 1;

  // Takes apart the luminance (one colour counts as three equal ones), or each colour. The plan is admitted. progress
  // may be null; gets the plan's taps, but for what weighing does. Throws NO_MEMORY_ERROR, and Cancelled.
  BandStack(const Plan& plan, int colours, bool luminance, const ColourLines& lines, Progress* progress);

  IppiSize size() const { return size_; }
  int colours() const { return colours_; }

  // What taking apart and putting together cost, in taps, and what putting together alone does.
  static double work(const Plan& plan, int planes);
  double weighingWork() const;

  // The planes that were taken apart: 1 for luminance, else the colours.
  int planes() const { return luminance_ ? 1 : colours_; }

  // The picture put together with these gains; lines are those that it was taken apart from. half adds 0.5 to every
  // sample. progress may be null, and gets weighingWork(). Throws NO_MEMORY_ERROR, and Cancelled, before any line is
  // written, and commits progress then.
  void weigh(const float* gains, float baseGain, bool half, const ColourLines& lines, ResultLines& result,
             Progress* progress) const;

  // What the bands of these gains and the residual come to by themselves, a line for each of planes().
  void sum(const float* gains, float baseGain, const ColourLines& lines, ResultLines& result) const;

  // Memory that it takes at most, where a result asks for so many rows of scratch.
  struct Bytes {
    double run;    // to take apart and put together
    double stack;  // in between
  };
  static Bytes bytesOf(const Plan& plan, int colours, bool luminance, int scratchRows, int threads);

 private:
  // line(y, colours, luminance, what became of each plane, scratch) for each line.
  template <typename Line>
  void eachLine(const float* gains, float baseGain, const ColourLines& lines, int scratchRows, Progress* progress,
                Line line) const;

  Levels levels_;
  IppiSize size_;
  int colours_;
  bool luminance_;
  std::vector<Pyramid> pyramids_;  // one a plane; none for a picture that a pyramid doesn't serve
  KivImage small_;                 // the planes of such a picture
};
