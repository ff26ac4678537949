// Whether a file that is read more than once is still what it was.
#pragma once

#include <sys/stat.h>

#include <string>

namespace orbel {

class FileState {
 public:
  // The file as it is now.
  explicit FileState(std::string file);

  // Throws Failure when the file has been written, replaced or taken away since.
  void requireUnchanged() const;

 private:
  std::string file_;
  struct stat state_ {};
};

}  // namespace orbel
