#include "target_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "failure.h"

namespace {

namespace fs = std::filesystem;

// The temporary file that a signal has to remove; a plain array, because a handler may touch nothing better.
char doomed[4096];
volatile std::sig_atomic_t doomedIsThere = 0;

extern "C" void removeAndDie(int signal) {
  if (doomedIsThere != 0) unlink(doomed);
  // The default action was put back on entry (SA_RESETHAND): it ends the program with the right status.
  raise(signal);
}

std::string reason(int error) { return std::generic_category().message(error); }

// Follows symbolic links, also one to a file that isn't there yet.
std::string withoutLinks(const std::string& name) {
  fs::path path(name);
  std::error_code error;
  for (int hops = 0; fs::is_symlink(fs::symlink_status(path, error)); ++hops) {
    if (hops == 40) throw Failure(name, reason(ELOOP));
    path = path.parent_path() / fs::read_symlink(path, error);
    if (error) throw Failure(name, error.message());
  }
  return path.string();
}

}  // namespace

TargetFile::TargetFile(const std::string& name) : name_(name), target_(withoutLinks(name)) {
  mode_t mode = 0666;
  struct stat existing {};
  if (stat(target_.c_str(), &existing) == 0) {
    if (S_ISDIR(existing.st_mode)) throw Failure(name_, reason(EISDIR));
    if (!S_ISREG(existing.st_mode)) throw Failure(name_, "Is not a regular file");
    // A rename would get past this; whoever took the permission away meant it.
    if (access(target_.c_str(), W_OK) != 0) throw Failure(name_, reason(errno));
    mode = existing.st_mode & 0777;
  } else if (errno != ENOENT) {
    throw Failure(name_, reason(errno));
  }

  const fs::path folder = fs::path(target_).parent_path();
  for (int attempt = 0; descriptor_ < 0; ++attempt) {
    const std::string leaf = ".orbel-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp";
    temporary_ = (folder / leaf).string();
    descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode | S_IWUSR);
    if (descriptor_ < 0 && (errno != EEXIST || attempt == 100)) throw Failure(name_, reason(errno));
  }
  if (temporary_.size() < sizeof doomed) {
    std::memcpy(doomed, temporary_.c_str(), temporary_.size() + 1);
    doomedIsThere = 1;
  }
}

TargetFile::~TargetFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  doomedIsThere = 0;
  close(descriptor_);
}

void TargetFile::replace() {
  struct stat existing {};
  if (stat(target_.c_str(), &existing) == 0) {
    // The owner first: changing it clears permission bits. Only root may give files away, so failing is fine.
    if (fchown(descriptor_, existing.st_uid, existing.st_gid) != 0) errno = 0;
    if (fchmod(descriptor_, existing.st_mode & 07777) != 0) throw Failure(name_, reason(errno));
  }
  if (fsync(descriptor_) != 0) throw Failure(name_, reason(errno));
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) throw Failure(name_, reason(errno));
  doomedIsThere = 0;
  temporary_.clear();

  // The rename itself lives in the folder. Some file systems can't sync one; the file is whole either way.
  const fs::path folder = fs::path(target_).parent_path();
  const int directory = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory >= 0) {
    fsync(directory);
    close(directory);
  }
}

void removeTemporaryOnSignals() {
  struct sigaction action {};
  action.sa_handler = removeAndDie;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}
