// orbel formats: what is read and written, and what each format holds.

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "pictures/formats.h"
#include "settings/settings_json.h"

namespace orbel {

namespace {

using nlohmann::ordered_json;

Metadata either(const Metadata& a, const Metadata& b) {
  return {a.icc || b.icc, a.exif || b.exif, a.xmp || b.xmp, a.iptc || b.iptc};
}

std::string extensionsOf(const FileFormat& format) {
  std::string text;
  for (const std::string& extension : format.extensions) text += (text.empty() ? "" : " ") + extension;
  return text;
}

std::string depthsOf(const FileFormat& format) {
  std::string text;
  for (const SampleType samples : format.samples) {
    const std::string name = samples == SampleType::floats ? "float" : std::to_string(depthOf(samples));
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

std::string metadataIn(const FileFormat& format) {
  const auto mark = [](const char* name, bool kept, bool repaired) {
    return kept ? std::string(name) + " " : repaired ? std::string(name) + "* " : "";
  };
  const Metadata& kept = format.kept;
  const Metadata& more = format.repaired;
  const std::string text = mark("ICC", kept.icc, more.icc) + mark("EXIF", kept.exif, more.exif) +
                           mark("XMP", kept.xmp, more.xmp) + mark("IPTC", kept.iptc, more.iptc);
  return text.empty() ? "none" : text.substr(0, text.size() - 1);
}

void printTable() {
  constexpr const char* row = "{:<10} {:<14} {:<8} {:<13} {:<7} {:<6} {}\n";
  fmt::print(row, "Format", "Extensions", "Written", "Depths", "Colour", "Alpha", "Metadata");
  for (const FileFormat& f : fileFormats()) {
    const bool written = f.isWritten();
    const char* colours = f.colours == 0 ? "both" : f.colours == 1 ? "grey" : "RGB";
    fmt::print(row, f.name, extensionsOf(f), written ? "yes" : "no", depthsOf(f), colours, f.alpha ? "yes" : "no",
               written ? metadataIn(f) : "-");
  }
  fmt::print("* by exiftool, where it is installed\n");
}

ordered_json jsonOf(const Metadata& m) { return {{"icc", m.icc}, {"exif", m.exif}, {"xmp", m.xmp}, {"iptc", m.iptc}}; }

void printJson() {
  ordered_json list = ordered_json::array();
  for (const FileFormat& f : fileFormats()) {
    list.push_back({{"format", f.name},
                    {"extensions", f.extensions},
                    {"written", f.isWritten()},
                    {"depths", depthsOf(f)},
                    {"grey", f.colours != 3},
                    {"colour", f.colours != 1},
                    {"alpha", f.alpha},
                    {"metadata", jsonOf(f.kept)},
                    {"metadata_with_exiftool", jsonOf(either(f.kept, f.repaired))}});
  }
  fmt::print("{}", jsonText(list));
}

}  // namespace

void addFormatsCommand(CLI::App& program, ExitCode&) {
  CLI::App* const command = program.add_subcommand("formats", "List the file formats and what they hold");
  const auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "Print JSON");
  command->callback([json] { *json ? printJson() : printTable(); });
}

}  // namespace orbel
