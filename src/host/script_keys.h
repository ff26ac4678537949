// The 24 script keys: the one place where a key's code, kind, place in the stored record and default are written down,
// and by what name actions play the filter.
// The descriptor reader and writer, the default fill and the terminology resource all work from this table.
#pragma once

#include <cstdint>
#include <iterator>

#include "host/host_interface.h"

// What a recorded action calls the filter: the event of its terminology, in a scope of its own that keeps event and
// keys apart from every other filter's.
inline constexpr OSType filterEventId = fourCharacters("obEq");
inline constexpr const char* filterScope = "6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4";

enum class ScriptKind { Float, Flag, Integer };  // double, one byte, int32 in the record

// As a descriptor and the terminology call it.
constexpr DescriptorTypeID descriptorType(ScriptKind kind) {
  return kind == ScriptKind::Float ? typeFloat : kind == ScriptKind::Flag ? typeBoolean : typeInteger;
}

struct ScriptKey {
  DescriptorKeyID code;
  const char* name;  // for people
  ScriptKind kind;
  std::int32_t offset;  // of the field in the stored record, in bytes
  double fallback;      // the field's value in a new record
};

// In the order of the record, which is also the order of writing a descriptor.
inline constexpr ScriptKey scriptKeys[] = {
    {fourCharacters("CON1"), "contrast 1", ScriptKind::Float, 16, 100},
    {fourCharacters("CON2"), "contrast 2", ScriptKind::Float, 24, 100},
    {fourCharacters("CON3"), "contrast 3", ScriptKind::Float, 32, 100},
    {fourCharacters("CON4"), "contrast 4", ScriptKind::Float, 40, 100},
    {fourCharacters("CON5"), "contrast 5", ScriptKind::Float, 48, 100},
    {fourCharacters("RAD1"), "radius 1", ScriptKind::Float, 56, 3},
    {fourCharacters("RAD2"), "radius 2", ScriptKind::Float, 64, 3},
    {fourCharacters("RAD3"), "radius 3", ScriptKind::Float, 72, 3},
    {fourCharacters("RAD4"), "radius 4", ScriptKind::Float, 80, 3},
    {fourCharacters("RAD5"), "radius 5", ScriptKind::Float, 88, 3},
    {fourCharacters("THR1"), "threshold 1", ScriptKind::Float, 96, 255},
    {fourCharacters("THR2"), "threshold 2", ScriptKind::Float, 104, 10},
    {fourCharacters("THR3"), "threshold 3", ScriptKind::Float, 112, 10},
    {fourCharacters("THR4"), "threshold 4", ScriptKind::Float, 120, 10},
    {fourCharacters("THR5"), "threshold 5", ScriptKind::Float, 128, 10},
    {fourCharacters("EDG1"), "keep edges 1", ScriptKind::Flag, 136, 0},
    {fourCharacters("EDG2"), "keep edges 2", ScriptKind::Flag, 137, 1},
    {fourCharacters("EDG3"), "keep edges 3", ScriptKind::Flag, 138, 1},
    {fourCharacters("EDG4"), "keep edges 4", ScriptKind::Flag, 139, 1},
    {fourCharacters("EDG5"), "keep edges 5", ScriptKind::Flag, 140, 1},
    {fourCharacters("FCTR"), "base factor", ScriptKind::Float, 144, 100},
    {fourCharacters("HALF"), "add half", ScriptKind::Flag, 152, 0},
    {fourCharacters("LUMI"), "luminance only", ScriptKind::Flag, 153, 1},
    {fourCharacters("WDTH"), "cross width", ScriptKind::Integer, 156, 10},
};
inline constexpr int scriptKeyCount = std::size(scriptKeys);
static_assert(scriptKeyCount == 24);

// Positions in the table of the keys that a reader is told to expect: the last three run backwards, and the cross width
// is not among them, though it is read when it comes.
inline constexpr int expectedScriptKeys[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,
                                             12, 13, 14, 15, 16, 17, 18, 19, 22, 21, 20};
inline constexpr int expectedScriptKeyCount = std::size(expectedScriptKeys);
