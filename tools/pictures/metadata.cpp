#include "pictures/metadata.h"

#include <algorithm>

#include "pictures/read_metadata.h"
#include "pictures/tag_copy.h"
#include "pictures/vips_picture.h"

namespace orbel {

namespace {

Metadata without(const Metadata& a, const Metadata& b) {
  return {a.icc && !b.icc, a.exif && !b.exif, a.xmp && !b.xmp, a.iptc && !b.iptc};
}
bool any(const Metadata& m) { return m.icc || m.exif || m.xmp || m.iptc; }

std::string list(const Metadata& m) {
  std::string text;
  const auto add = [&](bool there, const char* name) {
    if (there) text += (text.empty() ? "" : ", ") + std::string(name);
  };
  add(m.icc, "colour profile");
  add(m.exif, "EXIF");
  add(m.xmp, "XMP");
  add(m.iptc, "IPTC");
  return text;
}

Metadata both(const Metadata& a, const Metadata& b) { return without(a, without(a, b)); }

bool has(const Picture& picture, const char* field) { return imageOf(picture).get_typeof(field) != 0; }

// For what the library reads and the table of formats doesn't have, nothing is known.
Loader loaderOf(const Picture& picture) {
  const FileFormat* const format = formatOf(picture);
  return format != nullptr ? format->loader : Loader{nullptr};
}

// Empty where the picture has none.
std::string blockOf(const char* kind, const vips::VImage& picture) {
  if (picture.get_typeof(kind) == 0) return "";
  std::size_t size = 0;
  const auto* const bytes = static_cast<const char*>(picture.get_blob(kind, &size));
  return {bytes, size};
}

// The library drops tags that are longer, whatever it writes.
constexpr std::size_t mostExif = 65535;

// In JPEG files, what doesn't fit into the first segment, of which alone the library knows, is told of there.
bool isExtended(const std::string& xmp) { return xmp.find("HasExtendedXMP") != std::string::npos; }

// Whether the file may hold metadata that the library doesn't see.
bool mayHoldMore(const std::string& file, const Picture& picture) {
  if (isExtended(xmpOf(picture))) return true;
  const Loader loader = loaderOf(picture);
  const Metadata seen = metadataOf(picture);
  if (loader.has(seesMetadata)) return false;
  if (file == pipeName) return !loader.has(seesSomeMetadata) || any(seen);
  return loader.hidesMetadata == nullptr || loader.hidesMetadata(file, seen);
}

Metadata either(const Metadata& a, const Metadata& b) {
  return {a.icc || b.icc, a.exif || b.exif, a.xmp || b.xmp, a.iptc || b.iptc};
}

// "EXIF" when all of it is missing, else what of it: "EXIF (Make, Model)".
std::string textOf(const char* kind, const TagLoss& loss) {
  if (loss.missing.size() == loss.all) return kind;
  constexpr std::size_t most = 5;
  std::string names;
  for (std::size_t i = 0; i < std::min(most, loss.missing.size()); ++i) names += (i == 0 ? "" : ", ") + loss.missing[i];
  if (loss.missing.size() > most) names += " and " + std::to_string(loss.missing.size() - most) + " more";
  return std::string(kind) + " (" + names + ")";
}

// What the format has a place for and did not come over all the same.
std::string missingTags(const TagLosses& losses, const Metadata& possible) {
  std::string text;
  const auto add = [&](bool hasPlace, const char* kind, const TagLoss& loss) {
    if (hasPlace && !loss.missing.empty()) text += (text.empty() ? "" : ", ") + textOf(kind, loss);
  };
  add(possible.exif, "EXIF", losses.exif);
  add(possible.exif, "maker notes", losses.makerNotes);
  add(possible.xmp, "XMP", losses.xmp);
  add(possible.iptc, "IPTC", losses.iptc);
  return text;
}

}  // namespace

Metadata metadataOf(const Picture& picture) {
  return {has(picture, VIPS_META_ICC_NAME), has(picture, VIPS_META_EXIF_NAME) || has(picture, "exif-ifd0-Make"),
          has(picture, VIPS_META_XMP_NAME), has(picture, VIPS_META_IPTC_NAME) || has(picture, droppedIptc)};
}

Picture withHiddenXmp(const std::string& input, const Picture& picture, const FileFormat& format,
                      const AskExiftool& askExiftool) {
  const bool mayHaveSome = format.kept.xmp && input != pipeName && !metadataOf(picture).xmp &&
                           !loaderOf(picture).has(seesXmp) && mayHoldMore(input, picture);
  const std::string packet = mayHaveSome ? xmpPacketIn(input, askExiftool) : "";
  return packet.empty() ? picture : withXmp(picture, packet);
}

Notes completeMetadata(const std::string& input, const Picture& picture, TargetFile* target, const FileFormat& format,
                       const AskExiftool& askExiftool) {
  const Metadata there = metadataOf(picture);
  Metadata kept = both(there, format.kept);
  kept.iptc = kept.iptc && !has(picture, droppedIptc);
  kept.exif = kept.exif && blockOf(VIPS_META_EXIF_NAME, imageOf(picture)).size() <= mostExif;
  const std::string xmp = xmpOf(picture);
  const bool isLongXmp = xmp.size() > format.saver.mostXmp || isExtended(xmp);
  kept.xmp = kept.xmp && !isLongXmp;
  const Metadata possible = either(format.kept, format.repaired);
  const Metadata lost = both(without(there, kept), format.repaired);
  Metadata unplaced = without(there, possible);
  const bool hides = any(format.repaired) && mayHoldMore(input, picture);
  const Metadata doubtful = hides ? without({false, true, true, true}, kept) : lost;
  Notes notes;
  if (any(doubtful)) {
    const auto note = [&](const std::string& why) {
      notes.push_back((hides ? "may be missing" : "missing") + why + ": " + list(doubtful));
    };
    const bool isHasty = format.saver.checksSums && !loaderOf(picture).has(goesOnInComments);
    const bool takesXmp = format.repaired.xmp && !kept.xmp;
    const TagCopyOptions options = {kept.exif, takesXmp, isLongXmp, format.repaired.iptc, isHasty};
    if (input == pipeName || target == nullptr) {
      note(", since exiftool has no part in pipes");
    } else if (const TagCopy copy = copyTags(input, *target, options, askExiftool); !copy.installed) {
      note(" without exiftool (package libimage-exiftool-perl)");
    } else {
      if (!copy.error.empty()) notes.push_back("exiftool could not copy the metadata: " + copy.error);
      if (!copy.losses) note(", which exiftool could not tell");
      const TagLosses losses = copy.losses.value_or(TagLosses{});
      const std::string missing = missingTags(losses, possible);
      if (!missing.empty()) notes.push_back("metadata that did not come over: " + missing);
      // Of what the image library doesn't see, too.
      const Metadata read = {false, losses.exif.all > 0, losses.xmp.all > 0, losses.iptc.all > 0};
      unplaced = either(unplaced, without(read, possible));
    }
  }
  if (any(unplaced)) notes.push_back(format.name + " files can't hold here: " + list(unplaced));
  return notes;
}

}  // namespace orbel
