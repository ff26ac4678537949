#include "target_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>

#include "failure.h"

namespace {

namespace fs = std::filesystem;

// The temporary file that a signal has to remove; a plain array, because a handler may touch nothing better.
// And the one that another program makes beside it.
constexpr const char* rewrittenSuffix = "_rewritten";
constexpr const char* originalSuffix = "_original";
char doomed[4096];
char doomedToo[4096];
volatile std::sig_atomic_t doomedIsThere = 0;

int statusWhenStopped = 0;

extern "C" void removeAndDie(int) {
  if (doomedIsThere != 0) {
    unlink(doomed);
    unlink(doomedToo);
  }
  _exit(statusWhenStopped);
}

std::string reason(int error) { return std::generic_category().message(error); }

// Follows symbolic links, also one to a file that isn't there yet.
std::string withoutLinks(const std::string& name) {
  fs::path path(name);
  std::error_code error;
  for (int hops = 0; fs::is_symlink(fs::symlink_status(path, error)); ++hops) {
    if (hops == 40) throw Failure(name, reason(ELOOP), Cause::Unwritable);
    path = path.parent_path() / fs::read_symlink(path, error);
    if (error) throw Failure(name, error.message(), Cause::Unwritable);
  }
  return path.string();
}

// Of this run and its workers: in a folder that several machines share, a process's number is no name of its own.
const std::uint32_t runMark = std::random_device{}();

std::string temporaryName(const fs::path& target, int process) {
  const std::string mark = std::to_string(runMark) + "-" + std::to_string(process);
  return (target.parent_path() / (".orbel-" + mark + ".tmp")).string();
}

// Of the original, while it grows.
std::string copyName(const std::string& name, int process) { return temporaryName(name, process) + originalSuffix; }

void doom(const std::string& file, const std::string& other) {
  doomedIsThere = 0;
  if (std::max(file.size(), other.size()) >= sizeof doomed) return;
  std::memcpy(doomed, file.c_str(), file.size() + 1);
  std::memcpy(doomedToo, other.c_str(), other.size() + 1);
  doomedIsThere = 1;
}

// False, with errno EEXIST, when there is something of that name already. Where the system can't rename with that
// condition, the caller's look beforehand has to do.
bool renameToNew(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  return (errno == EINVAL || errno == ENOSYS) && std::rename(from, to) == 0;
}

void copyAndSync(const std::string& from, const std::string& to) {
  std::error_code error;
  fs::copy_file(from, to, error);
  if (error) throw Failure(to, error.message(), Cause::Unwritable);
  const int file = open(to.c_str(), O_RDONLY | O_CLOEXEC);
  const bool synced = file >= 0 && fsync(file) == 0;
  const int reasonNot = errno;
  if (file >= 0) close(file);
  if (!synced) throw Failure(to, reason(reasonNot), Cause::Unwritable);
}

const char* const isThere = "is there already; -f overwrites it";

}  // namespace

TargetFile::TargetFile(const std::string& name, bool overwrite)
    : name_(name), target_(withoutLinks(name)), overwrite_(overwrite) {
  mode_t mode = 0666;
  struct stat existing {};
  if (stat(target_.c_str(), &existing) == 0) {
    if (S_ISDIR(existing.st_mode)) throw Failure(name_, reason(EISDIR), Cause::Unwritable);
    if (!S_ISREG(existing.st_mode)) throw Failure(name_, "is not a regular file", Cause::Unwritable);
    if (!overwrite_) throw Failure(name_, isThere, Cause::OutputExists);
    // A rename would get past this; whoever took the permission away meant it.
    if (access(target_.c_str(), W_OK) != 0) throw Failure(name_, reason(errno), Cause::Unwritable);
    mode = existing.st_mode & 0777;
  } else if (errno != ENOENT) {
    throw Failure(name_, reason(errno), Cause::Unwritable);
  }

  temporary_ = temporaryName(target_, getpid());
  descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode | S_IWUSR);
  if (descriptor_ < 0) throw Failure(name_, reason(errno), Cause::Unwritable);
  doom(temporary_, rewritten());
}

TargetFile::~TargetFile() {
  if (!temporary_.empty()) {
    unlink(temporary_.c_str());
    unlink(rewritten().c_str());
  }
  doomedIsThere = 0;
  close(descriptor_);
}

std::string TargetFile::rewritten() const { return temporary_ + rewrittenSuffix; }

void TargetFile::takeRewritten() {
  const std::string file = rewritten();
  const int descriptor = open(file.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor < 0) return;
  struct stat before {};
  if (fstat(descriptor_, &before) != 0 || fchmod(descriptor, before.st_mode & 07777) != 0 ||
      std::rename(file.c_str(), temporary_.c_str()) != 0) {
    const int error = errno;
    close(descriptor);
    throw Failure(name_, reason(error));
  }
  close(descriptor_);
  descriptor_ = descriptor;
}

void TargetFile::replace() {
  struct stat existing {};
  if (stat(target_.c_str(), &existing) == 0) {
    // The owner first: changing it clears permission bits. Only root may give files away, so failing is fine.
    if (fchown(descriptor_, existing.st_uid, existing.st_gid) != 0) errno = 0;
    if (fchmod(descriptor_, existing.st_mode & 07777) != 0) throw Failure(name_, reason(errno), Cause::Unwritable);
  }
  if (fsync(descriptor_) != 0) throw Failure(name_, reason(errno), Cause::Unwritable);
  // A file that has come into being meanwhile is somebody's, too.
  const char* const from = temporary_.c_str();
  const char* const to = target_.c_str();
  if (!(overwrite_ ? std::rename(from, to) == 0 : renameToNew(from, to))) {
    const bool taken = errno == EEXIST;
    throw Failure(name_, taken ? isThere : reason(errno), taken ? Cause::OutputExists : Cause::Unwritable);
  }
  doomedIsThere = 0;
  unlink(rewritten().c_str());
  temporary_.clear();

  // The rename itself lives in the folder. Some file systems can't sync one; the file is whole either way.
  const fs::path folder = fs::path(target_).parent_path();
  const int directory = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory >= 0) {
    fsync(directory);
    close(directory);
  }
}

void TargetFile::keepOriginal() {
  const std::string original = name_ + originalSuffix;
  if (link(target_.c_str(), original.c_str()) == 0) return;
  if (errno == EEXIST) {
    if (fs::is_regular_file(original)) return;
    throw Failure(original, "is no file, and in the way of the original; --no-backup keeps none");
  }
  // A file system without links, or somebody else's file. A copy that a fault or a power cut leaves half done must not
  // pass for the original.
  const std::string copy = copyName(name_, getpid());
  doom(temporary_, copy);
  try {
    copyAndSync(target_, copy);
    if (!renameToNew(copy.c_str(), original.c_str()) && errno != EEXIST)
      throw Failure(original, reason(errno), Cause::Unwritable);
  } catch (const Failure&) {
    unlink(copy.c_str());
    throw;
  }
  unlink(copy.c_str());  // there, if somebody else has kept one meanwhile
}

void requireFree(const std::string& name) {
  struct stat existing {};
  if (lstat(name.c_str(), &existing) == 0) throw Failure(name, isThere, Cause::OutputExists);
}

void removeTemporaryOnSignals(int status) {
  statusWhenStopped = status;
  struct sigaction action {};
  action.sa_handler = removeAndDie;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}

void removeLeftovers(const std::string& target, int process) {
  const std::string temporary = temporaryName(withoutLinks(target), process);
  unlink(temporary.c_str());
  unlink((temporary + rewrittenSuffix).c_str());
  unlink(copyName(target, process).c_str());
}
