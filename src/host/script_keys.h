// How the host speaks of the 24 script keys: by what name actions play the filter, and its words for the keys' kinds.
#pragma once

#include <iterator>

#include "equalizer/setting_keys.h"
#include "host/host_interface.h"

// What a recorded action calls the filter: the event of its terminology, in a scope of its own that keeps event and
// keys apart from every other filter's.
inline constexpr OSType filterEventId = fourCharacters("obEq");
inline constexpr const char* filterScope = "6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4";

// As a descriptor and the terminology call it.
constexpr DescriptorTypeID descriptorType(ScriptKind kind) {
  return kind == ScriptKind::Float ? typeFloat : kind == ScriptKind::Flag ? typeBoolean : typeInteger;
}

// Positions in the table of the keys that a reader is told to expect: the last three run backwards, and the cross width
// is not among them, though it is read when it comes.
inline constexpr int expectedScriptKeys[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,
                                             12, 13, 14, 15, 16, 17, 18, 19, 22, 21, 20};
inline constexpr int expectedScriptKeyCount = std::size(expectedScriptKeys);
