// orbel bands: a picture taken apart, so that people see what each band's settings work on.

#include <filesystem>
#include <iostream>
#include <memory>
#include <new>
#include <thread>

#include "settings/bands.h"
#include "cli/commands.h"
#include "pictures/contact_sheet.h"
#include "batch/estimate.h"
#include "files/failure.h"
#include "pictures/finish.h"
#include "pictures/image_file.h"
#include "plugin/module.h"
#include "cli/page_option.h"
#include "settings/settings_json.h"
#include "cli/settings_options.h"
#include "files/target_file.h"
#include "cli/work_limits.h"

namespace orbel {

namespace fs = std::filesystem;
using vips::VImage;

namespace {

struct BandsArguments {
  std::string input;
  std::string folder;
  std::optional<int> page;
  SettingsArguments settings;
  std::optional<std::string> plugin;
  bool overwrite = false;
  Limits limits;
  bool json = false;
  bool verbose = false;
};

// Upright, since PNG files keep no orientation, and without alpha, which would hide what the bands hold.
VImage colourOf(const std::string& input, std::optional<int> page) {
  const VImage upright = loadPicture(input, page).autorot();
  return hasAlpha(upright) ? upright.extract_band(0, VImage::option()->set("n", colourBands(upright))) : upright;
}

class BandFiles {
 public:
  // Throws Failure when one of the files is there and may not be replaced.
  BandFiles(const BandsArguments& arguments, const std::vector<BandRun>& runs, bool floats) : arguments_(arguments) {
    const std::string extension = floats ? ".tif" : ".png";
    for (const BandRun& run : runs) names_.push_back(inFolder(run.name + extension));
    names_.push_back(inFolder("contact-sheet.png"));
    for (const std::string& name : names_) requireReplaceable(name, arguments.overwrite, true);
    fs::create_directories(arguments.folder);
  }

  void writeNext(const VImage& picture) {
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

void run(const BandsArguments& arguments, const std::vector<BandRun>& runs, const VImage& picture, BandFiles& files) {
  const PluginEntry entry = loadEntry(arguments.plugin ? *arguments.plugin : ownModule());
  const Document original = documentOf(picture, 32);
  ContactSheet sheet;
  for (const BandRun& band : runs) {
    Document document = original;
    runPlugin(entry, band.settings.script(), document);
    VImage result = picture.copy_memory();
    putDocument(document, result);
    files.writeNext(result);
    sheet.add(result, band.label);
  }
  files.writeNext(sheet.sheet());
}

// As for apply with a blend, which keeps the original too, and with the result beside the picture.
double memoryFor(const VImage& picture, const Settings& settings) {
  const int sampleBytes = depthOf(picture) / 8;
  return memoryOf({picture.width(), picture.height(), 2 * picture.bands(), colourBands(picture), sampleBytes,
                   sampleBytes, sizeof(float), true},
                  settings);
}

void takeApart(const BandsArguments& arguments) {
  const SettingsChoice choice = chooseSettings(arguments.settings);
  if (printIfAsked(choice)) return;
  const ImageLibrary library("orbel", arguments.verbose);
  removeTemporaryOnSignals(exitInterrupted);
  try {
    const VImage picture = colourOf(arguments.input, arguments.page);
    const int width = picture.width();
    const int height = picture.height();
    const std::vector<BandRun> runs = bandRuns(settingsFor(choice, width, height));
    requireThatHostHolds(arguments.input, width, height);
    const double mostMemory = arguments.limits.mostMemory();
    for (const BandRun& band : runs) {
      requireThatWindowsFit(arguments.input, band.settings, width, height);
      requireShortWork(arguments.input, band.settings, width, height, std::thread::hardware_concurrency(),
                       arguments.limits.mostMinutes);
      requireMemory(arguments.input, memoryFor(picture, band.settings), mostMemory);
    }
    BandFiles files(arguments, runs, picture.format() == VIPS_FORMAT_FLOAT);
    run(arguments, runs, picture, files);
    if (arguments.json) {
      std::cout << jsonText({{"input", arguments.input}, {"files", files.names()}});
    } else {
      for (const std::string& name : files.names()) std::cout << name << '\n';
    }
  } catch (const PluginRefusal& refusal) {
    throw Failure(arguments.input, refusal.what(), Cause::PluginRefused);
  } catch (const vips::VError& error) {
    throw Failure(arguments.input, error.what(), Cause::Damaged);
  } catch (const std::bad_alloc&) {
    throw Failure(arguments.input, "not enough memory for a picture of this size", Cause::NoMemory);
  }
}

}  // namespace

void addBandsCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand(
      "bands",
      "Write the five bands and the residual of a picture, each by itself, and a contact sheet of them.\n"
      "Bands show around middle grey, with the gains that are set. --mix, --mask, --luminance, --half and --cross\n"
      "have no part in it.");
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
  command->add_option("--plugin", a.plugin, "Plug-in module to run (default: the one that comes with orbel)")
      ->group(work)
      ->type_name("FILE");
  command->add_flag("-v,--verbose", a.verbose, "Show the image library's warnings as well")->group("Messages");
  command->callback([arguments] { takeApart(*arguments); });
}

}  // namespace orbel
