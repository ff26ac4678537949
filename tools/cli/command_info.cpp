// orbel info: what pictures are, and what a run on them would need.

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "batch/estimate.h"
#include "batch/inputs.h"
#include "batch/made_with.h"
#include "batch/outcome.h"
#include "cli/commands.h"
#include "cli/page_option.h"
#include "files/failure.h"
#include "pictures/library.h"
#include "pictures/metadata.h"
#include "pictures/picture.h"
#include "settings/settings.h"
#include "settings/settings_json.h"

namespace orbel {

namespace {

using nlohmann::json;

struct InfoArguments {
  InputArguments inputs;
  std::optional<int> page;
  bool json = false;
  bool verbose = false;
};

// At the settings that are built in.
double memoryFor(const std::string& file, const Picture& picture) {
  const orbel_plan plan = planFor(file, Settings().run, picture.shape(), 0);
  return memoryOf(plan, shapeOf(picture));
}

// Of the settings that a picture was made with, those that are not built in.
std::string unusualOf(const json& madeWith) {
  const json usual = settingsJson(Settings());
  std::string text;
  for (const auto& [word, value] : madeWith.items()) {
    if (!usual.contains(word) || usual[word] != value) text += (text.empty() ? "" : ", ") + word + " " + value.dump();
  }
  return text.empty() ? "the settings that are built in" : text;
}

json describe(const std::string& file, std::optional<int> page) {
  Notes remarks;
  const Picture picture = openPicture(file, remarks, page);
  const Metadata metadata = metadataOf(picture);
  const auto made = madeWithIn(picture);
  return {{"file", file},
          {"width", picture.width()},
          {"height", picture.height()},
          {"bits", depthOf(picture.samples())},
          {"colour", picture.colours() == 3},
          {"alpha", picture.hasAlpha()},
          {"orientation", picture.orientation()},
          {"icc", metadata.icc},
          {"exif", metadata.exif},
          {"xmp", metadata.xmp},
          {"iptc", metadata.iptc},
          {"loader", picture.loader()},
          {"memory", memoryFor(file, picture)},
          {"made_with", made ? made->settings : json()},
          {"notes", remarks}};
}

std::string textOf(const json& info) {
  std::string kept;
  for (const char* kind : {"icc", "exif", "xmp", "iptc"}) {
    if (info[kind]) kept += std::string(", ") + kind;
  }
  std::string text = fmt::format("{}: {} x {}, {} bits, {}{}{}; about {} to equalize",
                                 printable(info["file"].get<std::string>()), info["width"].get<int>(),
                                 info["height"].get<int>(), info["bits"].get<int>(), info["colour"] ? "RGB" : "grey",
                                 info["alpha"] ? " with alpha" : "", kept, memoryText(info["memory"]));
  if (!info["made_with"].is_null()) text += "; made with " + printable(unusualOf(info["made_with"]));
  for (const std::string note : info["notes"]) text += "; " + note;
  return text;
}

void tellOf(const std::string& file, const Failure& failure, bool asJson) {
  fmt::print(stderr, "orbel: {}\n", printable(failure.what()));
  if (!asJson) return;
  json object = {{"file", file}};
  object.update(toJson(failure));
  fmt::print("{}", jsonLine(object));
}

// False where it can't be told.
bool tellOf(const std::string& file, const InfoArguments& arguments) {
  try {
    const json info = describe(file, arguments.page);
    fmt::print("{}", arguments.json ? jsonLine(info) : textOf(info) + "\n");
    return true;
  } catch (const std::exception&) {
    tellOf(file, failureInHand(file), arguments.json);
  }
  return false;
}

ExitCode informAbout(const InfoArguments& arguments) {
  const ImageLibrary library("orbel", false);
  ExitCode code = exitGood;
  const Inputs inputs = listInputs(arguments.inputs);
  for (const auto& [folder, reason] : inputs.unreadable) {
    tellOf(folder, Failure(folder, reason, Cause::Unreadable), arguments.json);
    code = exitFileFailed;
  }
  for (const Input& input : inputs.files) {
    if (!tellOf(input.file, arguments)) code = exitFileFailed;
  }
  if (!inputs.leftAlone.empty()) {
    fmt::print(stderr, "orbel: {}\n", printable(leftAloneText(inputs, arguments.verbose)));
  }
  return code;
}

}  // namespace

void addInfoCommand(CLI::App& program, ExitCode& outcome) {
  CLI::App* const command = program.add_subcommand("info", "Tell what pictures are, and the memory that a run takes");
  const auto arguments = std::make_shared<InfoArguments>();
  command->add_option("IN", arguments->inputs.names, "Pictures, or folders with -r; - is the standard input")
      ->required()
      ->type_name("");
  command->add_flag("-r,--recursive", arguments->inputs.recursive,
                    "Take the pictures in folders, and in the folders therein");
  addPageOption(*command, arguments->page);
  command->add_flag("--json", arguments->json, "Print JSON, an object a line");
  command->add_flag("-v,--verbose", arguments->verbose, "Name all files that are left alone");
  command->callback([arguments, &outcome] { outcome = informAbout(*arguments); });
}

}  // namespace orbel
