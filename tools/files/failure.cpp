#include "files/failure.h"

#include <algorithm>
#include <iterator>
#include <new>

namespace orbel {

namespace {

struct CauseWord {
  Cause cause;
  const char* word;
};

constexpr CauseWord words[] = {{Cause::None, ""},
                               {Cause::Unreadable, "unreadable"},
                               {Cause::UnknownFormat, "unknown_format"},
                               {Cause::CameraRaw, "camera_raw"},
                               {Cause::SeveralPages, "several_pages"},
                               {Cause::Unsupported, "unsupported"},
                               {Cause::Damaged, "damaged"},
                               {Cause::TooLarge, "too_large"},
                               {Cause::TooLong, "too_long"},
                               {Cause::NoMemory, "no_memory"},
                               {Cause::Settings, "settings"},
                               {Cause::OutputExists, "output_exists"},
                               {Cause::OutputTaken, "output_taken"},
                               {Cause::OutputFormat, "output_format"},
                               {Cause::Unwritable, "unwritable"},
                               {Cause::PluginRefused, "plugin_refused"},
                               {Cause::Crashed, "crashed"},
                               {Cause::Interrupted, "interrupted"},
                               {Cause::UpToDate, "up_to_date"},
                               {Cause::OwnResult, "own_result"},
                               {Cause::NoPicture, "no_picture"},
                               {Cause::Other, "other"}};

}  // namespace

const char* wordOf(Cause cause) {
  return std::find_if(std::begin(words), std::end(words), [&](const CauseWord& w) { return w.cause == cause; })->word;
}

Cause causeFrom(const std::string& word) {
  const auto* const found =
      std::find_if(std::begin(words), std::end(words), [&](const CauseWord& w) { return w.word == word; });
  return found == std::end(words) ? Cause::Other : found->cause;
}

Failure failureInHand(const std::string& file) {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return {file, notEnoughMemory, Cause::NoMemory};
  } catch (const std::exception& error) {
    return {file, error.what()};
  }
}

}  // namespace orbel
