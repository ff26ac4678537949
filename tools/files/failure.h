// What stops a run: the file it is about, the reason in one line, and what kind of reason it is.
#pragma once

#include <stdexcept>
#include <string>

namespace orbel {

// Kinds of reasons. docs/batch.md says what each means to users.
enum class Cause {
  None,
  Unreadable,
  UnknownFormat,
  CameraRaw,
  SeveralPages,
  Unsupported,
  Damaged,
  TooLarge,
  TooLong,
  NoMemory,
  Settings,
  OutputExists,
  OutputTaken,
  OutputFormat,
  Unwritable,
  PluginRefused,
  Crashed,
  Interrupted,
  UpToDate,
  OwnResult,
  NoPicture,
  Other
};

// The word for it in JSON, which stays what it is: programs go by it. Empty for None.
const char* wordOf(Cause cause);
Cause causeFrom(const std::string& word);  // Other for a word that is none

struct Failure : std::runtime_error {
  Failure(const std::string& about, const std::string& why, Cause kind = Cause::Other)
      : std::runtime_error(about + ": " + why), file(about), reason(why), cause(kind) {}

  std::string file;
  std::string reason;
  Cause cause;
};

inline constexpr const char* notEnoughMemory = "not enough memory for a picture of this size";

// What the exception in hand means for this file: itself, where it is a Failure. For catch blocks alone: the one place
// where what goes wrong gets its file and its words.
Failure failureInHand(const std::string& file);

}  // namespace orbel
