// What the image library says when it fails, as Failures about a file: its own errors don't leave this folder.
#pragma once

#include <string>
#include <vips/vips8>

#include "files/failure.h"

namespace orbel {

inline constexpr const char* saysWhatCannotBe =
    "it is damaged, or says of itself what can't be (no pixels, or far too many)";

// The library's last failure, in one line.
std::string lastError();

// That of a file that couldn't be opened.
Failure whyUnread(const std::string& name);

// What work() gives. Where the library fails in it, throws the Failure that why() gives.
template <typename Why, typename Work>
auto translated(Why why, Work work) {
  try {
    return work();
  } catch (const vips::VError&) {
    throw why();
  }
}

// The same with the library's own words, about the file of this name.
template <typename Work>
auto translated(const std::string& name, Cause cause, Work work) {
  return translated([&] { return Failure(name, lastError(), cause); }, work);
}

}  // namespace orbel
