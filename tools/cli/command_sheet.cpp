// orbel sheet: a picture under each preset, for choosing by eye.

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

#include "batch/equalize.h"
#include "batch/estimate.h"
#include "cli/commands.h"
#include "cli/page_option.h"
#include "cli/work_limits.h"
#include "files/failure.h"
#include "files/target_file.h"
#include "pictures/contact_sheet.h"
#include "pictures/formats.h"
#include "pictures/library.h"
#include "pictures/mask.h"
#include "pictures/picture.h"
#include "pictures/save.h"
#include "settings/presets.h"
#include "settings/settings_file.h"

namespace orbel {

namespace {

constexpr int partWidth = 480;
constexpr int partHeight = 320;

struct SheetArguments {
  std::string input;
  std::string output;
  std::vector<std::string> presets;
  std::optional<std::string> centre;
  std::optional<int> page;
  bool overwrite = false;
  Limits limits;
  bool verbose = false;
};

// Around X,Y, or around the picture's middle, as much of it as there is.
Rectangle partOf(const Picture& picture, const std::optional<std::string>& centre) {
  int x = picture.width() / 2;
  int y = picture.height() / 2;
  if (centre) {
    const std::vector<std::string> numbers = split(*centre, ',');
    if (numbers.size() != 2) throw SettingsError("--part: " + quoted(*centre) + " is no X,Y in pixels");
    x = integerFrom("--part", numbers[0]);
    y = integerFrom("--part", numbers[1]);
    if (x < 0 || y < 0 || x >= picture.width() || y >= picture.height()) {
      throw SettingsError("--part: " + quoted(*centre) + " lies outside of the picture");
    }
  }
  const int width = std::min(partWidth, picture.width());
  const int height = std::min(partHeight, picture.height());
  return {std::clamp(x - width / 2, 0, picture.width() - width),
          std::clamp(y - height / 2, 0, picture.height() - height), width, height};
}

Picture under(const Settings& settings, const std::string& file, const Picture& picture, const Limits& limits) {
  const orbel_plan plan = planFor(file, settings.run, picture.shape(), 0);
  requireShortWork(file, settings.run, plan, 0, limits.mostMinutes);
  RunShape shape = shapeOf(picture);
  shape.readBytes = shape.writtenBytes = 2 * bytesOf(picture.samples());
  requireMemory(file, memoryOf(plan, shape), limits.mostMemory());
  Picture result = roomFor(picture, picture.samples());
  std::optional<Picture> mask;
  if (settings.mask) mask = decodePicture(maskOver(*settings.mask, picture), file);
  const orbel_picture weights = mask ? mask->record() : orbel_picture{};
  equalizeByEngine(file, settings.run, 0, picture.record(), result.record(), mask ? &weights : nullptr);
  return result;
}

// Upright, as people hold it, and without alpha.
void makeSheet(const SheetArguments& arguments) {
  std::vector<std::string> names = arguments.presets;
  for (const Preset& preset : allPresets()) {
    if (arguments.presets.empty() && preset.name != "neutral") names.push_back(preset.name);
  }
  const ImageLibrary library("orbel", arguments.verbose);
  removeTemporaryOnSignals(exitInterrupted);
  const std::string& input = arguments.input;
  try {
    const FileFormat& format = writableFormat(extensionOf(arguments.output), arguments.output);
    TargetFile target(arguments.output, arguments.overwrite);
    const Picture picture = uprightColours(loadPicture(input, arguments.page));
    const Rectangle part = partOf(picture, arguments.centre);
    ContactSheet sheet;
    sheet.addWithPart(picture, part, "the original");
    for (const std::string& name : names) {
      Settings settings;
      readSettings(presetFile(name), settings);
      sheet.addWithPart(under(settings, input, picture, arguments.limits), part, name);
    }
    savePicture(sheet.sheet(), format, target.descriptor(), arguments.output);
    target.replace();
    std::cout << arguments.output << '\n';
  } catch (const SettingsError&) {
    throw;
  } catch (const std::exception&) {
    throw failureInHand(input);
  }
}

}  // namespace

void addSheetCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand(
      "sheet",
      "Write one picture with another under each preset beside the original, whole and a part of it pixel by pixel:\n"
      "for choosing by eye, on a screen, a phone or a print.");
  const auto arguments = std::make_shared<SheetArguments>();
  SheetArguments& a = *arguments;
  command->add_option("IN", a.input, "Picture to show")->required()->type_name("");
  command->add_option("-o,--output", a.output, "The sheet")->required()->type_name("OUT");
  command->add_option("-p,--preset", a.presets, "A preset or settings file, again for another (default: all presets)")
      ->type_name("NAME|FILE")
      ->allow_extra_args(false);
  command->add_option("--part", a.centre, "What the parts show the surroundings of (default: the picture's middle)")
      ->type_name("X,Y");
  addPageOption(*command, a.page);
  command->add_flag("-f,--force", a.overwrite, "Replace a file that is there");
  addLimitOptions(*command, a.limits, "Work");
  command->add_flag("-v,--verbose", a.verbose, "Show the image library's warnings as well")->group("Messages");
  command->callback([arguments] { makeSheet(*arguments); });
}

}  // namespace orbel
