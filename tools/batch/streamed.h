// A picture through the engine in lines, where its settings have a reference edge: read once for what the engine keeps
// of it, and once more for the result, which is made where it is written.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "api/orbel.h"
#include "batch/equalize.h"
#include "pictures/picture.h"
#include "pictures/stream.h"

namespace orbel {

class StreamedRun {
 public:
  // Of a file's picture of such a shape. tellPart gets the part of the work that is done, now and then, on one thread
  // at a time. Throws Failure about the file, and std::bad_alloc.
  StreamedRun(const std::string& file, const orbel_settings& run, const orbel_picture& shape,
              std::function<void(double)> tellPart);

  // Hands on the lines of the picture, in order; true when they could be taken.
  bool take(const orbel_picture& lines);

  // When all lines have been taken: the picture as it will be, made of this source, or the part of it. mask as in
  // rendered. The run outlives it.
  Picture result(const Picture& source, const std::optional<Rectangle>& part, SampleType samples,
                 const std::optional<Picture>& mask);

  // When all lines have been taken: a copy of the picture in memory, of any size, becomes one of the result. mask is of
  // the copy's size. Throws Failure about the file, and std::bad_alloc.
  void equalizeCopy(const Picture& copy, const std::optional<Picture>& mask);

 private:
  std::string render(const PartOf& part);
  void passed(int lines, int width);

  std::string file_;
  orbel_settings run_;
  EngineOptions options_;
  orbel_status status_ = ORBEL_OK;
  Stack stack_;
  Look look_;
  std::function<void(double)> tellPart_;
  std::mutex telling_;
  double pixels_;        // of both passes
  double passed_ = 0;    // of them
  double lastTold_ = 0;  // a part
};

}  // namespace orbel
