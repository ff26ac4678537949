#include "files/target_file.h"

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

#include "files/failure.h"

namespace orbel {

namespace {

namespace fs = std::filesystem;

// The temporary file that a signal has to remove; a plain array, because a handler may touch nothing better.
// And the one that another program makes beside it.
constexpr const char* rewrittenSuffix = "_rewritten";
constexpr const char* originalSuffix = "_original";
char removable[4096];
char removableToo[4096];
volatile std::sig_atomic_t removableIsThere = 0;

int statusWhenStopped = 0;

// While files change places, a signal waits: it comes on any thread, so it can't be blocked on this one.
volatile std::sig_atomic_t changingPlaces = 0;
volatile std::sig_atomic_t stopped = 0;

extern "C" void removeAndDie(int) {
  if (changingPlaces != 0) {
    stopped = 1;
    return;
  }
  if (removableIsThere != 0) {
    unlink(removable);
    unlink(removableToo);
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

void removeOnSignals(const std::string& file, const std::string& other) {
  removableIsThere = 0;
  if (std::max(file.size(), other.size()) >= sizeof removable) return;
  std::memcpy(removable, file.c_str(), file.size() + 1);
  std::memcpy(removableToo, other.c_str(), other.size() + 1);
  removableIsThere = 1;
}

// False, with errno EEXIST, when there is something of that name already. Where the system can't rename with that
// condition, the caller's look beforehand has to do.
bool renameToNew(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  return (errno == EINVAL || errno == ENOSYS) && std::rename(from, to) == 0;
}

class ChangeOfPlaces {
 public:
  ChangeOfPlaces() { changingPlaces = 1; }
  ~ChangeOfPlaces() {
    changingPlaces = 0;
    if (stopped != 0) removeAndDie(0);
  }
  ChangeOfPlaces(const ChangeOfPlaces&) = delete;
  ChangeOfPlaces& operator=(const ChangeOfPlaces&) = delete;
};

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

// Gives the file a second name, or a copy where the file system has no links, or they are refused for somebody else's.
void linkOrCopy(const std::string& from, const std::string& to) {
  if (link(from.c_str(), to.c_str()) != 0) copyAndSync(from, to);
}

const char* const isThere = "is there already; -f overwrites it";

// What stands at the target; all zero where nothing does. Throws Failure where that can't be replaced.
struct stat standing(const std::string& target, const std::string& name, bool overwrite) {
  struct stat existing {};
  if (stat(target.c_str(), &existing) == 0) {
    if (S_ISDIR(existing.st_mode)) throw Failure(name, reason(EISDIR), Cause::Unwritable);
    if (!S_ISREG(existing.st_mode)) throw Failure(name, "is not a regular file", Cause::Unwritable);
    if (!overwrite) throw Failure(name, isThere, Cause::OutputExists);
    // A rename would get past this; whoever took the permission away meant it.
    if (access(target.c_str(), W_OK) != 0) throw Failure(name, reason(errno), Cause::Unwritable);
  } else if (errno != ENOENT) {
    throw Failure(name, reason(errno), Cause::Unwritable);
  }
  return existing;
}

// Whether there is an original already. Throws Failure when something else has its name.
bool hasOriginal(const std::string& original) {
  struct stat existing {};
  if (stat(original.c_str(), &existing) != 0) return false;
  if (S_ISREG(existing.st_mode)) return true;
  throw Failure(original, "is no file, and in the way of the original; --no-backup keeps none", Cause::Unwritable);
}

fs::path folderOf(const std::string& name) {
  const fs::path folder = fs::path(name).parent_path();
  return folder.empty() ? "." : folder;
}

// Owner, group and permissions of what is replaced.
bool takeOver(int descriptor, const struct stat& existing) {
  mode_t mode = existing.st_mode & 07777;
  // The owner first: changing it clears permission bits. Only root may give files away, and a group may be none of
  // ours.
  if (fchown(descriptor, existing.st_uid, existing.st_gid) != 0 &&
      fchown(descriptor, static_cast<uid_t>(-1), existing.st_gid) != 0) {
    // Our own group then has no more than everybody.
    mode &= ~static_cast<mode_t>(S_IRWXG) | ((mode & S_IRWXO) << 3);
  }
  return fchmod(descriptor, mode) == 0;
}

}  // namespace

TargetFile::TargetFile(const std::string& name, bool overwrite, mode_t permissions)
    : name_(name), target_(withoutLinks(name)), overwrite_(overwrite) {
  const struct stat existing = standing(target_, name_, overwrite_);
  const mode_t mode = existing.st_mode != 0 ? existing.st_mode & 0777 : permissions & 0666;
  temporary_ = temporaryName(target_, getpid());
  // Writable in any case, for those who write into it by its name.
  descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode | S_IWUSR);
  if (descriptor_ < 0) throw Failure(name_, reason(errno), Cause::Unwritable);
  removeOnSignals(temporary_, rewritten());
  struct stat fresh {};
  fstat(descriptor_, &fresh);
  permissions_ = fresh.st_mode & mode;
  begun_ = fresh.st_mtim;
}

TargetFile::~TargetFile() {
  if (!temporary_.empty()) {
    unlink(temporary_.c_str());
    unlink(rewritten().c_str());
  }
  removableIsThere = 0;
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
    throw Failure(name_, reason(error), Cause::Unwritable);
  }
  close(descriptor_);
  descriptor_ = descriptor;
}

void TargetFile::replace(bool keepOriginal) {
  struct stat existing {};
  const bool isThereNow = stat(target_.c_str(), &existing) == 0;
  if (!(isThereNow ? takeOver(descriptor_, existing) : fchmod(descriptor_, permissions_) == 0)) {
    throw Failure(name_, reason(errno), Cause::Unwritable);
  }
  // Some file systems keep no times; the content is none the worse for it.
  const timespec times[] = {begun_, begun_};  // of reading and of writing
  futimens(descriptor_, times);
  if (fsync(descriptor_) != 0) throw Failure(name_, reason(errno), Cause::Unwritable);

  const std::string original = name_ + originalSuffix;
  keepOriginal = keepOriginal && !hasOriginal(original);
  // First under another name: a copy that a fault or a power cut leaves half done must not pass for the original.
  const std::string second = keepOriginal ? copyName(name_, getpid()) : "";
  if (keepOriginal) removeOnSignals(temporary_, second);
  try {
    if (keepOriginal) linkOrCopy(target_, second);
    changePlaces(second, original);
  } catch (const Failure&) {
    unlink(second.c_str());
    throw;
  }

  // The rename itself lives in the folder. Some file systems can't sync one; the file is whole either way.
  const int directory = open(folderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory >= 0) {
    fsync(directory);
    close(directory);
  }
}

void TargetFile::changePlaces(const std::string& second, const std::string& original) {
  const ChangeOfPlaces signalsWait;
  bool kept = false;
  if (!second.empty()) {
    kept = renameToNew(second.c_str(), original.c_str());
    if (!kept && errno != EEXIST) throw Failure(original, reason(errno), Cause::Unwritable);
    if (!kept) unlink(second.c_str());  // somebody else has kept one meanwhile
  }
  // A file that has come into being meanwhile is somebody's, too.
  const char* const from = temporary_.c_str();
  const char* const to = target_.c_str();
  if (!(overwrite_ ? std::rename(from, to) == 0 : renameToNew(from, to))) {
    const int reasonNot = errno;
    if (kept) unlink(original.c_str());
    const bool taken = reasonNot == EEXIST;
    throw Failure(name_, taken ? isThere : reason(reasonNot), taken ? Cause::OutputExists : Cause::Unwritable);
  }
  removableIsThere = 0;
  unlink(rewritten().c_str());
  temporary_.clear();
}

void requireReplaceable(const std::string& name, bool overwrite, bool makesFolder) {
  struct stat link {};
  if (!overwrite && lstat(name.c_str(), &link) == 0) throw Failure(name, isThere, Cause::OutputExists);
  const std::string target = withoutLinks(name);
  standing(target, name, overwrite);
  fs::path folder = folderOf(target);
  while (makesFolder && access(folder.c_str(), F_OK) != 0 && errno == ENOENT) folder = folderOf(folder);
  if (access(folder.c_str(), W_OK | X_OK) != 0) throw Failure(name, reason(errno), Cause::Unwritable);
}

mode_t permissionsOf(const std::string& file) {
  struct stat existing {};
  return stat(file.c_str(), &existing) == 0 ? existing.st_mode & 0666 : 0666;
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

}  // namespace orbel
