// libvips, which reads and writes pictures.
#pragma once

namespace orbel {

// The library, started and shut down; pictures live in between. Its own warnings go to the error output when verbose,
// nowhere otherwise. Throws Failure.
class ImageLibrary {
 public:
  ImageLibrary(const char* programName, bool verbose);
  ~ImageLibrary();
  ImageLibrary(const ImageLibrary&) = delete;
  ImageLibrary& operator=(const ImageLibrary&) = delete;
};

}  // namespace orbel
