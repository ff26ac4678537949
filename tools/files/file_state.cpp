#include "files/file_state.h"

#include <utility>

#include "files/failure.h"

namespace orbel {

FileState::FileState(std::string file) : file_(std::move(file)) { stat(file_.c_str(), &state_); }

void FileState::requireUnchanged() const {
  const FileState now(file_);
  const struct stat& a = state_;
  const struct stat& b = now.state_;
  if (a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
      a.st_mtim.tv_nsec == b.st_mtim.tv_nsec) {
    return;
  }
  throw Failure(file_, "has changed while it was read", Cause::Unreadable);
}

}  // namespace orbel
