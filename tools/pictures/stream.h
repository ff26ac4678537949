// Pictures that pass by in lines and are never in memory as a whole.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "pictures/picture.h"

namespace orbel {

// Calls take with all lines of an opened picture, from the top downwards, some at a time. It throws nothing; false ends
// the reading. name is for messages. Throws Failure.
void readInLines(const Picture& opened, const std::string& name,
                 const std::function<bool(const orbel_picture& lines)>& take);

// A part of a picture, from its own column and row on.
struct PartOf {
  int column;
  int row;
  orbel_picture source;
  orbel_picture target;
  const orbel_picture* mask;  // null where there is none
};

// Fills a target. Called on several threads at once; throws nothing, and gives an error's text, empty for none.
using Render = std::function<std::string(const PartOf& part)>;

// A picture that is made where it is asked for: of the source's shape and metadata, or of its part, with samples of
// this type. The mask is as maskOver gives it. Whatever render uses outlives the picture. Throws Failure about the
// source's file.
Picture rendered(const Picture& source, const std::optional<Rectangle>& part, SampleType samples,
                 const std::optional<Picture>& mask, const Render& render);

}  // namespace orbel
