#include "pictures/tag_loss.h"

#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <set>

namespace orbel {

using nlohmann::json;

namespace {

// The rest of a picture's first directory says how its samples lie in the file, and is the writer's own.
const std::set<std::string> describing = {
    "Artist",   "Copyright",  "DocumentName", "HostComputer", "ImageDescription", "Make",
    "Model",    "ModifyDate", "PageName",     "Rating",       "RatingPercent",    "Software",
    "XPAuthor", "XPComment",  "XPSubject",    "XPTitle",      "XPKeywords",       "Orientation"};

// What belongs to the form of a file, in directories that describe the picture otherwise. Exiftool copies none of it.
const std::set<std::string> ofForm = {
    "About",           "CFAPattern",     "ColorSpace",  "ComponentsConfiguration", "CompressedBitsPerPixel",
    "ExifImageHeight", "ExifImageWidth", "ExifVersion", "FlashpixVersion",         "HasExtendedXMP",
    "OffsetSchema",    "Padding",        "XMPToolkit"};

// The kind of a tag by its name, as in EXIF:IFD0:Make; null when a copy needn't have it.
TagLoss* kindOf(const std::string& tag, TagLosses& losses) {
  const auto in = [&](const char* group) { return tag.rfind(group, 0) == 0; };
  const std::string name = tag.substr(tag.rfind(':') + 1);
  if (in("MakerNotes:")) return &losses.makerNotes;
  if (in("EXIF:IFD0:")) return describing.count(name) != 0 ? &losses.exif : nullptr;
  if (ofForm.count(name) != 0) return nullptr;
  if (in("EXIF:ExifIFD:") || in("EXIF:GPS:")) return &losses.exif;
  if (in("XMP:")) return &losses.xmp;
  return in("IPTC:") ? &losses.iptc : nullptr;
}

// Numbers are written anew, as fractions, and so are lists of them; words have to come over as they are.
bool isWords(const json& value) {
  const std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
  return std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c) != 0 || c >= 0x80; });
}

const json* fileIn(const json& files, const std::string& name) {
  for (const json& file : files) {
    if (file.is_object() && file.value("SourceFile", "") == name) return &file;
  }
  return nullptr;
}

}  // namespace

const std::vector<std::string>& readingOfTags() {
  // Quietly: what it says beside goes to the same stream, and would get into the middle of a long account.
  static const std::vector<std::string> arguments = {
      "-q", "-q", "-j", "-n", "-G0:1", "-EXIF:all", "-XMP:all", "-IPTC:all", "-MakerNotes:all"};
  return arguments;
}

std::optional<TagLosses> tagLosses(const std::string& written, const std::string& picture, const std::string& copy) {
  // Warnings may stand around it.
  const std::size_t begin = written.find("[{");
  const std::size_t end = written.rfind("}]");
  if (begin == std::string::npos || end == std::string::npos || end < begin) return {};
  const json files = json::parse(written.substr(begin, end + 2 - begin), nullptr, false);
  const json* const before = fileIn(files, picture);
  const json* const after = fileIn(files, copy);
  if (before == nullptr || after == nullptr) return {};
  TagLosses losses;
  for (const auto& [tag, value] : before->items()) {
    TagLoss* const kind = kindOf(tag, losses);
    if (kind == nullptr) continue;
    ++kind->all;
    const auto found = after->find(tag);
    const bool came = found != after->end() && (*found == value || !isWords(value));
    if (!came) kind->missing.push_back(tag.substr(tag.rfind(':') + 1));
  }
  return losses;
}

}  // namespace orbel
