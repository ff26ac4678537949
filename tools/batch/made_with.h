// What a result was made with, remembered with the result: in its own metadata, in the recipe beside it, or both. So -u
// knows what was made otherwise, and people can look it up.
#pragma once

#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "batch/job.h"

namespace orbel {

struct MadeWith {  // NOLINT(bugprone-exception-escape): a move of JSON asserts, and throws nothing
  // The settings by their words, and of the options those that change samples, where they were given: depth, quality,
  // compression, host-depth, plugin. A mask counts by its bare name and the SHA-256 of its file, and a plug-in by its
  // bare name: no path of the machine gets into a picture.
  nlohmann::json settings;

  // The result's time of modification, which ties this to its content: a file that somebody has worked on since has
  // another one.
  std::time_t time = 0;
};

// The settings of a run. A mask that can't be read has no digest; what reads it next says why.
nlohmann::json settingsOf(const JobOptions& options, const std::optional<std::string>& plugin);

// As a text in one line, of ASCII, and back. Nothing for what is no such text.
std::string textOf(const MadeWith& made);
std::optional<MadeWith> madeWithFrom(const std::string& text);

// The picture with this in its XMP packet, all else of which stays as it is. Where that can't be (no XMP in the format,
// a packet that is none, or one that the format can't hold any more), the picture as it was.
Picture remembering(const MadeWith& made, const Picture& picture, const FileFormat& format);

// What the picture's own metadata tell.
std::optional<MadeWith> madeWithIn(const Picture& picture);

// The name of the recipe beside a result, the line of it that tells this, and what it tells.
std::string recipeOf(const std::string& result);
std::string recipeLine(const MadeWith& made);
std::optional<MadeWith> madeWithInRecipe(const std::string& result);

}  // namespace orbel
