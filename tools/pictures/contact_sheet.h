// Pictures side by side, each with its label.
#pragma once

#include <string>
#include <vector>

#include "pictures/picture.h"

namespace orbel {

class ContactSheet {
 public:
  // Keeps a reduced 8-bit copy of the picture. All pictures are grey, or all are in colour, without alpha. Throws
  // Failure about the picture's file.
  void add(const Picture& picture, const std::string& label);

  // In rows of three; there is at least one picture. Throws Failure about the first one's file.
  Picture sheet() const;

 private:
  std::vector<Picture> cells_;
};

}  // namespace orbel
