// Replaces a file whole or not at all: the new content grows in a temporary file beside it.
#pragma once

#include <string>

class TargetFile {
 public:
  // Opens the temporary file. Where name is a symbolic link, the file that it points to is the target. Throws Failure
  // when the target is there and can't be replaced (a directory, a device, not writable), or its folder takes no file.
  explicit TargetFile(const std::string& name);

  // Removes the temporary file, unless it has become the target.
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  // Write here; readable and seekable.
  int descriptor() const { return descriptor_; }

  // Brings the content to the disk and puts it in the target's place, with the permissions that the target had, and
  // its owner as far as that is allowed. Throws Failure; the target is then as it was.
  void replace();

 private:
  std::string name_;    // as given, for messages
  std::string target_;  // without symbolic links
  std::string temporary_;
  int descriptor_ = -1;
};

// From here on SIGINT, SIGTERM and SIGHUP remove the temporary file before they end the program.
void removeTemporaryOnSignals();
