// Replaces a file whole or not at all: the new content grows in a temporary file beside it.
#pragma once

#include <string>

class TargetFile {
 public:
  // Opens the temporary file. Where name is a symbolic link, the file that it points to is the target. Throws Failure
  // when the target is there and can't be replaced (a directory, a device, not writable, or overwrite is not set), or
  // its folder takes no file.
  TargetFile(const std::string& name, bool overwrite);

  // Removes the temporary file, unless it has become the target.
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  // Write here; readable and seekable.
  int descriptor() const { return descriptor_; }

  // Where the content grows.
  const std::string& temporary() const { return temporary_; }

  // Where another program may write it anew, beside it. It goes away when the temporary file does.
  std::string rewritten() const;

  // Takes what is there for the content, if it is there. Throws Failure.
  void takeRewritten();

  // Keeps what is in the target's place under the name NAME_original, unless there is such a file: that is the older
  // and truer original. Throws Failure.
  void keepOriginal();

  // Brings the content to the disk and puts it in the target's place, with the permissions that the target had, and
  // its owner as far as that is allowed. Throws Failure; the target is then as it was.
  void replace();

 private:
  std::string name_;    // as given, for messages
  std::string target_;  // without symbolic links
  std::string temporary_;
  bool overwrite_;
  int descriptor_ = -1;
};

// Throws Failure when there is something of that name.
void requireFree(const std::string& name);

// From here on SIGINT, SIGTERM and SIGHUP remove the temporary file, and end the process with this status.
void removeTemporaryOnSignals(int status);

// The name of the temporary file of a process for the target; what a process left that could not clean up behind itself
// (killed by the system) goes away with removeLeftovers.
void removeLeftovers(const std::string& target, int process);
