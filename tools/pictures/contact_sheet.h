// Pictures side by side, each with its label.
#pragma once

#include <string>
#include <vector>
#include <vips/vips8>

namespace orbel {

class ContactSheet {
 public:
  // Keeps a reduced 8-bit copy of the picture. All pictures are grey, or all are in colour, without alpha.
  void add(const vips::VImage& picture, const std::string& label);

  // In rows of three. Throws vips::VError.
  vips::VImage sheet() const;

 private:
  std::vector<vips::VImage> cells_;
};

}  // namespace orbel
