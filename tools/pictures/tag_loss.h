// Which tags of a picture another file lacks, by what exiftool reads of both.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orbel {

// Of one kind of metadata.
struct TagLoss {
  std::size_t all = 0;               // tags that the picture has and its copies should have
  std::vector<std::string> missing;  // of these: those that the copy has not, or with another text
};

struct TagLosses {
  TagLoss exif, xmp, iptc, makerNotes;
};

// The arguments that have exiftool read two files, whose names follow.
const std::vector<std::string>& readingOfTags();

// What it wrote then; nothing when it is no account of the two files.
std::optional<TagLosses> tagLosses(const std::string& written, const std::string& picture, const std::string& copy);

}  // namespace orbel
