#include "metadata.h"

#include <algorithm>

#include "tag_copy.h"

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

bool isBy(const char* loader, const vips::VImage& picture) {
  return std::string(picture.get_string(VIPS_META_LOADER)).rfind(loader, 0) == 0;
}

// Whether the file may hold metadata that the library doesn't see.
bool mayHoldMore(const vips::VImage& picture) {
  for (const char* readWhole : {"jpeg", "webp", "ppm"}) {
    if (isBy(readWhole, picture)) return false;
  }
  // PNG files without any will have none of the hidden kind either; asking costs a fifth of a second.
  return !isBy("png", picture) || any(metadataOf(picture));
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

Metadata metadataOf(const vips::VImage& picture) {
  const auto has = [&](const char* name) { return picture.get_typeof(name) != 0; };
  return {has(VIPS_META_ICC_NAME), has(VIPS_META_EXIF_NAME) || has("exif-ifd0-Make"), has(VIPS_META_XMP_NAME),
          has(VIPS_META_IPTC_NAME) || has(droppedIptc)};
}

Notes completeMetadata(const std::string& input, const vips::VImage& picture, TargetFile& target,
                       const FileFormat& format, const AskExiftool& askExiftool) {
  const Metadata there = metadataOf(picture);
  Metadata kept = format.kept;
  if (picture.get_typeof(droppedIptc) != 0) kept.iptc = false;
  const Metadata possible = either(format.kept, format.repaired);
  Metadata unplaced = without(there, possible);
  Notes notes;
  const Metadata lost = both(without(there, kept), format.repaired);
  if (input != pipeName && any(format.repaired) && (any(lost) || mayHoldMore(picture))) {
    const Metadata present = both(there, kept);
    // GIF files may go on behind their first comment, which is where haste stops.
    const bool isHasty = format.name == "PNG" && !isBy("gif", picture);
    const TagCopy copy = copyTags(
        input, target, {present.exif, format.repaired.xmp && !present.xmp, format.repaired.iptc, isHasty}, askExiftool);
    if (!copy.installed) {
      notes.push_back(any(lost) ? "missing without exiftool (package libimage-exiftool-perl): " + list(lost)
                                : "without exiftool (package libimage-exiftool-perl) EXIF or IPTC may be missing");
    } else if (!copy.error.empty()) {
      notes.push_back("exiftool could not copy the metadata: " + copy.error);
    }
    if (copy.losses) {
      const std::string missing = missingTags(*copy.losses, possible);
      if (!missing.empty()) notes.push_back("metadata that did not come over: " + missing);
      // Of what the image library doesn't see, too.
      unplaced = either(
          unplaced,
          without({false, copy.losses->exif.all > 0, copy.losses->xmp.all > 0, copy.losses->iptc.all > 0}, possible));
    } else if (copy.installed) {
      notes.emplace_back("could not be checked: EXIF, XMP and IPTC may be missing");
    }
  }
  if (any(unplaced)) notes.push_back(format.name + " files can't hold here: " + list(unplaced));
  return notes;
}
