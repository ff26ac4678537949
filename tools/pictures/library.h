// libvips, which reads and writes pictures.
#pragma once

namespace orbel {

// The library, started and shut down; pictures live in between. Its own warnings go to the error output when verbose,
// nowhere otherwise. threads is how many of its own it works with; 0: as many as there are processors. Throws Failure.
class ImageLibrary {
 public:
  ImageLibrary(const char* programName, bool verbose, int threads = 0);
  ~ImageLibrary();
  ImageLibrary(const ImageLibrary&) = delete;
  ImageLibrary& operator=(const ImageLibrary&) = delete;
};

}  // namespace orbel
