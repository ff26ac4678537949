// A picture through the engine in lines, where its settings have a reference edge: read once for what the engine keeps
// of it, and once more for the result, which is made where it is written.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "api/orbel.h"
#include "batch/equalize.h"
#include "pictures/picture.h"

namespace orbel {

class StreamedRun {
 public:
  // Of a file's picture of such a shape. Throws Failure about the file, and std::bad_alloc.
  StreamedRun(const std::string& file, const orbel_settings& run, const orbel_picture& shape);

  // Hands on the lines of the picture, in order; true when they could be taken.
  bool take(const orbel_picture& lines);

  // When all lines have been taken: the picture as it will be, made of this source, or the part of it. mask as in
  // rendered. The run outlives it.
  Picture result(const Picture& source, const std::optional<Rectangle>& part, SampleType samples,
                 const std::optional<Picture>& mask);

 private:
  std::string file_;
  orbel_settings run_;
  EngineOptions options_;
  orbel_status status_ = ORBEL_OK;
  Stack stack_;
  Look look_;
};

}  // namespace orbel
