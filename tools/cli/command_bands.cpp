// orbel bands: a picture taken apart, so that people see what each band's settings work on.

#include <filesystem>
#include <iostream>
#include <memory>
#include <new>
#include <utility>

#include "batch/equalize.h"
#include "batch/estimate.h"
#include "cli/commands.h"
#include "cli/page_option.h"
#include "cli/settings_options.h"
#include "cli/work_limits.h"
#include "files/failure.h"
#include "files/target_file.h"
#include "pictures/contact_sheet.h"
#include "pictures/formats.h"
#include "pictures/library.h"
#include "pictures/picture.h"
#include "pictures/save.h"
#include "settings/bands.h"
#include "settings/settings_json.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

struct BandsArguments {
  std::string input;
  std::string folder;
  std::optional<int> page;
  SettingsArguments settings;
  bool overwrite = false;
  Limits limits;
  bool json = false;
  bool verbose = false;
};

class BandFiles {
 public:
  // Throws Failure when one of the files is there and may not be replaced.
  BandFiles(const BandsArguments& arguments, const std::vector<BandView>& views, bool floats) : arguments_(arguments) {
    const std::string extension = floats ? ".tif" : ".png";
    for (const BandView& view : views) names_.push_back(inFolder(view.name + extension));
    names_.push_back(inFolder("contact-sheet.png"));
    for (const std::string& name : names_) requireReplaceable(name, arguments.overwrite, true);
    fs::create_directories(arguments.folder);
  }

  void writeNext(const Picture& picture) {
    const std::string& name = names_.at(written_++);
    TargetFile target(name, arguments_.overwrite);
    savePicture(picture, writableFormat(extensionOf(name), name), target.descriptor(), name);
    target.replace();
  }

  const std::vector<std::string>& names() const { return names_; }

 private:
  std::string inFolder(const std::string& name) const { return (fs::path(arguments_.folder) / name).string(); }

  const BandsArguments& arguments_;
  std::vector<std::string> names_;
  std::size_t written_ = 0;
};

// Upright, since PNG files keep no orientation, and without alpha, which would hide what the bands hold.
void takeApart(const BandsArguments& arguments) {
  const Settings settings = chooseSettings(arguments.settings);
  if (printIfAsked(arguments.settings, settings)) return;
  const ImageLibrary library("orbel", arguments.verbose);
  removeTemporaryOnSignals(exitInterrupted);
  const std::string& input = arguments.input;
  try {
    const Picture picture = uprightColours(loadPicture(input, arguments.page));
    const std::vector<BandView> views = bandViews(settings.run);
    const orbel_settings& run = views.front().run;
    const orbel_plan plan = planFor(input, run, picture.shape(), 0);
    requireShortWork(input, run, plan, 0, arguments.limits.mostMinutes);
    // The view beside the picture.
    RunShape shape = shapeOf(picture);
    shape.readBytes = shape.writtenBytes = 2 * bytesOf(picture.samples());
    const double memory = memoryOf(plan, shape);
    requireMemory(input, memory, arguments.limits.mostMemory());
    BandFiles files(arguments, views, picture.samples() == SampleType::floats);
    const orbel_picture source = picture.record();
    EngineOptions options(input);
    orbel_stack* made = nullptr;
    options.require(orbel_stack_create(&run, &source, options.get(), &made));
    const Stack stack(made);
    ContactSheet sheet;
    for (const BandView& view : views) {
      const Picture result = roomFor(picture, picture.samples());
      const orbel_picture target = result.record();
      options.require(orbel_stack_weigh(stack.get(), &view.run, &source, &target, options.get()));
      files.writeNext(result);
      if (view.run.half != 0) {
        sheet.addBand(result, view.label);
      } else {
        sheet.add(result, view.label);
      }
    }
    files.writeNext(sheet.sheet());
    if (arguments.json) {
      std::cout << jsonText({{"input", input}, {"files", files.names()}});
    } else {
      for (const std::string& name : files.names()) std::cout << name << '\n';
    }
  } catch (const std::exception&) {
    throw failureInHand(input);
  }
}

}  // namespace

void addBandsCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand(
      "bands",
      "Write the five bands and the residual of a picture, each by itself, and a contact sheet of them, in which "
      "bands\n"
      "are stretched to be seen; it says by how much.\n"
      "Bands show around middle grey, with the gains that are set, at the scale of the reference edge where there is\n"
      "one. --mix, --mask, --luminance, --half and --cross have no part in it.");
  const auto arguments = std::make_shared<BandsArguments>();
  BandsArguments& a = *arguments;
  command->add_option("IN", a.input, "Picture to take apart")->required()->type_name("");
  command->add_option("-o,--output", a.folder, "Folder for the pictures; is made where there is none")
      ->required()
      ->type_name("DIR");
  addPageOption(*command, a.page);
  command->add_flag("-f,--force", a.overwrite, "Replace files that are there");
  command->add_flag("--json", a.json, "Print JSON");
  addSettingsOptions(*command, a.settings);
  const char* work = "Work";
  addLimitOptions(*command, a.limits, work);
  command->add_flag("-v,--verbose", a.verbose, "Show the image library's warnings as well")->group("Messages");
  command->callback([arguments] { takeApart(*arguments); });
}

}  // namespace orbel
