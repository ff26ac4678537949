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

  // The same for a band around middle grey: its contrast is raised until all but a hundredth of it fills three quarters
  // of the range, and the label says by how much.
  void addBand(const Picture& band, const std::string& label);

  // The same with a part of the picture below, as it is.
  void addWithPart(const Picture& picture, const Rectangle& part, const std::string& label);

  // In rows of three; there is at least one picture. Throws Failure about the first one's file.
  Picture sheet() const;

 private:
  std::vector<Picture> cells_;
};

}  // namespace orbel
