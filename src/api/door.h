// What all calls of the front door share: records that grow, the caller's message, and no exception let out.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>

#include "api/orbel.h"
#include "equalizer/progress.h"
#include "image/float_environment.h"
#include "image/kiv_image.h"
#include "image/parallel.h"

// A refusal on its way to the caller.
struct Refusal {
  orbel_status status;
  std::string message;
};

// A caller's record as this version knows it; nothing for null and for a size that no version had. There has been one
// version so far: a larger record is a newer program's, which gets told.
template <typename Record>
std::optional<Record> recordOf(const Record* record) {
  if (record == nullptr || record->size != sizeof(Record)) return std::nullopt;
  return *record;
}

template <typename Record>
Record requireRecord(const Record* record, const char* name) {
  const std::optional<Record> known = recordOf(record);
  if (!known) throw Refusal{ORBEL_BAD_ARGUMENT, std::string(name) + " is null, or its size was not set"};
  return *known;
}

// Zeros, but for the size. Nothing is written where the size is no version's.
template <typename Record>
orbel_status initRecord(Record* record, std::size_t size) {
  if (record == nullptr || size != sizeof(Record)) return ORBEL_BAD_ARGUMENT;
  *record = Record{};
  record->size = size;
  return ORBEL_OK;
}

// As short as tells it apart, with a point whatever the process's locale writes.
inline std::string textOf(double value) {
  char text[32];             // -2.2250738585072014e-308 and less
#if defined(__EMSCRIPTEN__)  // whose C++ library has it for integers alone, and whose C library has one locale
  for (int digits = 1; digits <= 17; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
#else
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
#endif
}

// Cut off to the buffer, which may be null.
inline void putMessage(const char* text, char* message, std::size_t capacity) {
  if (message == nullptr || capacity == 0) return;
  const std::size_t length = std::min(std::strlen(text), capacity - 1);
  std::memcpy(message, text, length);
  message[length] = '\0';
}

// Calls work(options) in a floating-point environment and a team of its own, and turns what it throws into a status and
// the caller's message. Its ends ask for no memory: there may be none.
template <typename Work>
orbel_status guarded(const orbel_options* options, Work work) {
  orbel_options known{};
  const auto end = [&known](orbel_status status, const char* text) {
    putMessage(text, known.message, known.message_capacity);
    return status;
  };
  try {
    if (options != nullptr) known = requireRecord(options, "options");
    if (known.threads < 0) throw Refusal{ORBEL_BAD_ARGUMENT, "options: threads is below 0"};
    if (known.reserved != 0) throw Refusal{ORBEL_BAD_ARGUMENT, "options: reserved is not 0"};
    const FloatEnvironment floats;
    ippInit();
    const Team team(known.threads);
    work(known);
    return end(ORBEL_OK, "");
  } catch (const Refusal& refusal) {
    return end(refusal.status, refusal.message.c_str());
  } catch (const Cancelled&) {
    return end(ORBEL_CANCELLED, orbel_status_text(ORBEL_CANCELLED));
  } catch (...) {  // NO_MEMORY_ERROR, std::bad_alloc, std::length_error: nothing else is thrown below
    return end(ORBEL_NO_MEMORY, orbel_status_text(ORBEL_NO_MEMORY));
  }
}
