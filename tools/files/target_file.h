// Replaces a file whole or not at all: the new content grows in a temporary file beside it.
#pragma once

#include <sys/stat.h>

#include <ctime>
#include <string>

namespace orbel {

class TargetFile {
 public:
  // Opens the temporary file. Where name is a symbolic link, the file that it points to is the target. Throws Failure
  // when the target is there and can't be replaced (a directory, a device, not writable, or overwrite is not set), or
  // its folder takes no file. A new file gets those of the permissions that the umask leaves; one that is there keeps
  // its own.
  TargetFile(const std::string& name, bool overwrite, mode_t permissions = 0666);

  // Removes the temporary file, unless it has become the target.
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  // Write here; readable and seekable.
  int descriptor() const { return descriptor_; }

  // Where the content grows.
  const std::string& temporary() const { return temporary_; }

  // When the temporary file came to be, by the clock of its file system. It becomes the target's time of modification:
  // what has changed since, whatever the content was made of, is newer than the target.
  std::time_t begun() const { return begun_.tv_sec; }

  // Where another program may write it anew, beside it. It goes away when the temporary file does.
  std::string rewritten() const;

  // Takes what is there for the content, if it is there. Throws Failure.
  void takeRewritten();

  // Brings the content to the disk and puts it in the target's place, which is never empty meanwhile: with the
  // permissions that the target had, and its owner as far as that is allowed. Throws Failure; all is then as it was.
  //
  // With keepOriginal, what was in the target's place is kept under the name NAME_original, unless there is such a
  // file: that is the older and truer original.
  void replace(bool keepOriginal = false);

 private:
  void changePlaces(const std::string& second, const std::string& original);

  std::string name_;    // as given, for messages
  std::string target_;  // without symbolic links
  std::string temporary_;
  bool overwrite_;
  int descriptor_ = -1;
  mode_t permissions_ = 0;
  timespec begun_{};
};

// Throws Failure when the constructor would, as far as that can be told without writing anything; without overwrite
// also for a link that leads nowhere. With makesFolder, the folder may be one that is still to be made.
void requireReplaceable(const std::string& name, bool overwrite, bool makesFolder = false);

// The permissions to read and write a file; all of them where there is no such file.
mode_t permissionsOf(const std::string& file);

// From here on SIGINT, SIGTERM and SIGHUP remove the temporary file, and end the process with this status.
void removeTemporaryOnSignals(int status);

// The name of the temporary file of a process for the target; what a process left that could not clean up behind itself
// (killed by the system) goes away with removeLeftovers.
void removeLeftovers(const std::string& target, int process);

}  // namespace orbel
