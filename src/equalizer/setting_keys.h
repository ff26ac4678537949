// The settings by the four characters that scripts know them by: the one place where a key's code, kind, default,
// member and place in the stored record are written down. The descriptor reader and writer, the default fill, the
// terminology resource and the front door's settings all work from this table.
#pragma once

#include <cstdint>
#include <iterator>

#include "equalizer/four_characters.h"

enum class ScriptKind { Float, Flag, Integer };  // double, one byte, int32 in the record

// What a key sets; the first four are each band's.
enum class SettingMember { gain, radius, threshold, edges, residual, half, luminance, overlay };

struct ScriptKey {
  std::uint32_t code;
  const char* name;  // for people
  ScriptKind kind;
  std::int32_t offset;  // of the field in the stored record, in bytes
  double fallback;      // the field's value in a new record
  SettingMember member;
  int band;  // 0 for the finest, and for members of the whole picture
};

// In the order of the record, which is also the order of writing a descriptor.
inline constexpr ScriptKey scriptKeys[] = {
    {fourCharacters("CON1"), "contrast 1", ScriptKind::Float, 16, 100, SettingMember::gain, 0},
    {fourCharacters("CON2"), "contrast 2", ScriptKind::Float, 24, 100, SettingMember::gain, 1},
    {fourCharacters("CON3"), "contrast 3", ScriptKind::Float, 32, 100, SettingMember::gain, 2},
    {fourCharacters("CON4"), "contrast 4", ScriptKind::Float, 40, 100, SettingMember::gain, 3},
    {fourCharacters("CON5"), "contrast 5", ScriptKind::Float, 48, 100, SettingMember::gain, 4},
    {fourCharacters("RAD1"), "radius 1", ScriptKind::Float, 56, 3, SettingMember::radius, 0},
    {fourCharacters("RAD2"), "radius 2", ScriptKind::Float, 64, 3, SettingMember::radius, 1},
    {fourCharacters("RAD3"), "radius 3", ScriptKind::Float, 72, 3, SettingMember::radius, 2},
    {fourCharacters("RAD4"), "radius 4", ScriptKind::Float, 80, 3, SettingMember::radius, 3},
    {fourCharacters("RAD5"), "radius 5", ScriptKind::Float, 88, 3, SettingMember::radius, 4},
    {fourCharacters("THR1"), "threshold 1", ScriptKind::Float, 96, 255, SettingMember::threshold, 0},
    {fourCharacters("THR2"), "threshold 2", ScriptKind::Float, 104, 10, SettingMember::threshold, 1},
    {fourCharacters("THR3"), "threshold 3", ScriptKind::Float, 112, 10, SettingMember::threshold, 2},
    {fourCharacters("THR4"), "threshold 4", ScriptKind::Float, 120, 10, SettingMember::threshold, 3},
    {fourCharacters("THR5"), "threshold 5", ScriptKind::Float, 128, 10, SettingMember::threshold, 4},
    {fourCharacters("EDG1"), "keep edges 1", ScriptKind::Flag, 136, 0, SettingMember::edges, 0},
    {fourCharacters("EDG2"), "keep edges 2", ScriptKind::Flag, 137, 1, SettingMember::edges, 1},
    {fourCharacters("EDG3"), "keep edges 3", ScriptKind::Flag, 138, 1, SettingMember::edges, 2},
    {fourCharacters("EDG4"), "keep edges 4", ScriptKind::Flag, 139, 1, SettingMember::edges, 3},
    {fourCharacters("EDG5"), "keep edges 5", ScriptKind::Flag, 140, 1, SettingMember::edges, 4},
    {fourCharacters("FCTR"), "base factor", ScriptKind::Float, 144, 100, SettingMember::residual, 0},
    {fourCharacters("HALF"), "add half", ScriptKind::Flag, 152, 0, SettingMember::half, 0},
    {fourCharacters("LUMI"), "luminance only", ScriptKind::Flag, 153, 1, SettingMember::luminance, 0},
    {fourCharacters("WDTH"), "cross width", ScriptKind::Integer, 156, 10, SettingMember::overlay, 0},
};
inline constexpr int scriptKeyCount = std::size(scriptKeys);
static_assert(scriptKeyCount == 24);

// A key's four characters as a text.
struct ScriptKeyName {
  char text[5];
};
constexpr ScriptKeyName nameOf(const ScriptKey& key) {
  const auto character = [&](int shift) { return static_cast<char>(key.code >> shift & 0xFF); };
  return {{character(24), character(16), character(8), character(0), '\0'}};
}
