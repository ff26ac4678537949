// A picture as the image library has it, for the files of this folder.
#pragma once

#include <string>
#include <utility>
#include <vips/vips8>

#include "pictures/picture.h"

namespace orbel {

struct Picture::Impl {
  vips::VImage image;
  std::string name;  // of the file that it came from, for messages
};

inline const vips::VImage& imageOf(const Picture& picture) { return picture.impl().image; }
inline const std::string& nameOf(const Picture& picture) { return picture.impl().name; }

// The image is grey or RGB, with or without alpha, of one of the types of samples.
inline Picture pictureOf(vips::VImage image, const std::string& name) {
  return Picture(std::make_shared<const Picture::Impl>(Picture::Impl{std::move(image), name}));
}

}  // namespace orbel
