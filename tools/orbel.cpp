// orbel: the band equalizer on image files, without Photoshop.

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "estimate.h"
#include "failure.h"
#include "image_file.h"
#include "module.h"
#include "plugin_host.h"
#include "settings.h"
#include "target_file.h"

namespace {

enum ExitCode { exitGood = 0, exitFileFailed = 1, exitUsage = 2 };

// The command line as it was typed; lists and values are still text.
struct Arguments {
  std::string input;
  std::string output;
  std::optional<std::string> contrast;
  std::optional<std::string> radius;
  std::optional<std::string> threshold;
  std::optional<std::string> edge;
  std::optional<std::string> factor;
  std::optional<std::string> cross;
  std::vector<std::string> pairs;
  bool half = false;
  bool luminance = false;
  bool planes = false;
  std::optional<std::string> plugin;
  bool force = false;
  bool quiet = false;
  bool verbose = false;
};

constexpr const char* description =
    "Splits a picture into five bands of detail and a coarse residual, weighs each, and puts them together again.\n"
    "Bands are numbered from the finest (1) to the coarsest (5).";

constexpr const char* notes =
    "A list takes five values, or one for all five bands. --set wins over the other options.\n"
    "OUT's extension tells the file format. Depth, alpha, colour profile and metadata stay those of IN.\n"
    "16-bit files are worked on at Photoshop's 16 bits (32769 levels); floats are kept as they are, white being 1.\n"
    "\n"
    "Examples:\n"
    "  orbel in.jpg out.jpg --contrast 100,150,130,100,100   more texture\n"
    "  orbel in.png out.png --contrast 150 --edge off        everything, without edge protection\n"
    "  orbel in.tif out.tif --factor 0 --half --planes       detail alone, around middle grey\n"
    "  orbel in.png out.png --set CON1=150 --set RAD1=2.5    by the plug-in's keys\n"
    "\n"
    "Exit status: 0 all good, 1 a file failed, 2 wrong usage or settings.";

void describeOptions(CLI::App& app, Arguments& a) {
  app.add_option("IN", a.input, "Picture to read")->required();
  app.add_option("OUT", a.output, "Picture to write; may be IN itself")->required();
  const char* bands = "Bands";
  const auto list = [&](const char* name, std::optional<std::string>& target, const char* text) {
    app.add_option(name, target, text)->group(bands)->type_name("LIST");
  };
  list("--contrast", a.contrast, "Gain of each band in percent; 100 leaves a band as it is (default 100)");
  list("--radius", a.radius, "Radius of each band in pixels of its level (default 3)");
  list("--threshold", a.threshold, "Contrast of protected edges, 0 to 255 (default 255,10,10,10,10)");
  list("--edge", a.edge, "Edge protection, on or off (default off,on,on,on,on)");
  const char* whole = "Whole picture";
  app.add_option("--factor", a.factor, "Gain of the coarse residual in percent (default 100)")
      ->group(whole)
      ->type_name("NUMBER");
  app.add_flag("--half", a.half, "Add middle grey at the end")->group(whole);
  auto* luminance = app.add_flag("--luminance", a.luminance, "Work on luminance and keep the colours (default)");
  luminance->group(whole);
  app.add_flag("--planes", a.planes, "Work on red, green and blue each")->group(whole)->excludes(luminance);
  app.add_option("--cross", a.cross, "Draw the cross overlay, so many pixels wide (default 0: none)")
      ->group(whole)
      ->type_name("PIXELS");
  const char* keys = "Keys";
  app.add_option("--set", a.pairs, "One of the plug-in's keys: CON1-5, RAD1-5, THR1-5, EDG1-5, FCTR, HALF, LUMI, WDTH")
      ->group(keys)
      ->type_name("KEY=VALUE")
      ->allow_extra_args(false);
  const char* work = "Work";
  app.add_option("--plugin", a.plugin, "Plug-in module to run (default: the one in orbel's own folder)")
      ->group(work)
      ->type_name("FILE");
  app.add_flag("--force", a.force, "Run also when it will take more than ten minutes")->group(work);
  const char* talk = "Messages";
  app.add_flag("--quiet", a.quiet, "Say nothing but errors")->group(talk);
  app.add_flag("--verbose", a.verbose, "Show the image library's warnings as well")->group(talk);
}

Settings settingsOf(const Arguments& a) {
  Settings settings;
  if (a.contrast) settings.setBands("--contrast", "CON", *a.contrast);
  if (a.radius) settings.setBands("--radius", "RAD", *a.radius);
  if (a.threshold) settings.setBands("--threshold", "THR", *a.threshold);
  if (a.edge) settings.setBands("--edge", "EDG", *a.edge);
  if (a.factor) settings.set("--factor", "FCTR", *a.factor);
  if (a.cross) settings.set("--cross", "WDTH", *a.cross);
  if (a.half) settings.set("--half", "HALF", "on");
  if (a.luminance) settings.set("--luminance", "LUMI", "on");
  if (a.planes) settings.set("--planes", "LUMI", "off");
  for (const std::string& pair : a.pairs) settings.setPair("--set", pair);
  return settings;
}

// Returns what was done, in a line.
std::string equalizeFile(const Arguments& arguments, const Settings& settings) {
  const std::string& input = arguments.input;
  const std::string& output = arguments.output;
  const FileFormat& format = formatOf(output);
  vips::VImage picture = loadPicture(input);
  requireThatFormatHolds(format, picture, output);
  requireThatWindowsFit(input, settings, picture.width(), picture.height());
  if (!arguments.force) {
    requireShortWork(input, settings, picture.width(), picture.height(), std::thread::hardware_concurrency());
  }
  const PluginEntry entry = loadEntry(arguments.plugin ? *arguments.plugin : ownModule());
  // Opened before the work, so that a target that can't be written doesn't cost the work first.
  TargetFile target(output);

  Document document;
  try {
    document = documentOf(picture);
    runPlugin(entry, settings.script(), document);
  } catch (const PluginRefusal& refusal) {
    throw Failure(input, refusal.what());
  } catch (const std::bad_alloc&) {
    throw Failure(input, "not enough memory for a picture of this size");
  }
  putDocument(document, picture);

  savePicture(picture, format, target.descriptor(), output);
  target.replace();
  return input + " -> " + output + " (" + std::to_string(document.width) + " x " + std::to_string(document.height) +
         ", " + std::to_string(document.depth) + " bits)";
}

void run(int argc, char** argv) {
  CLI::App app(description, "orbel");
  app.footer(notes);
  app.set_version_flag("--version", "orbel " ORBEL_VERSION);
  Arguments arguments;
  describeOptions(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request);  // prints the help or the version
    return;
  } catch (const CLI::ParseError& error) {
    throw SettingsError(error.what() + std::string(" (orbel --help tells more)"));
  }
  const Settings settings = settingsOf(arguments);

  const ImageLibrary library(argv[0], arguments.verbose);
  removeTemporaryOnSignals();
  // Over the limit for file sizes, writing then fails like on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  const std::string done = equalizeFile(arguments, settings);
  if (!arguments.quiet) std::cout << done << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  try {
    run(argc, argv);
    return exitGood;
  } catch (const SettingsError& error) {
    std::cerr << "orbel: " << error.what() << '\n';
    return exitUsage;
  } catch (const std::exception& error) {
    std::cerr << "orbel: " << error.what() << '\n';
    return exitFileFailed;
  }
}
