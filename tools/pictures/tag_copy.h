// Has exiftool copy a picture's tags into the file that is written, and looks what came over.
#pragma once

#include <optional>
#include <string>

#include "files/target_file.h"
#include "pictures/exiftool.h"
#include "pictures/tag_loss.h"

namespace orbel {

struct TagCopy {
  bool installed = true;            // whether there is an exiftool
  std::string error;                // why nothing was copied; empty when something was
  std::optional<TagLosses> losses;  // of the written file as it stands now; nothing when exiftool could not tell
};

struct TagCopyOptions {
  bool leavesExif = false;  // what is written already stays as it is: exiftool would write it in its own way
  bool takesXmp = false;
  bool xmpByTags = false;  // into what is there, and as many segments as it wants
  bool takesIptc = false;
  bool isHasty = false;  // no look at the written file's sums, and at what the picture's may hold behind its end
};

// Tags of structure, which are the writer's own, are left out, and the colour profile. Throws Failure.
//
// XMP and IPTC come over as blocks, or exiftool would lose of the XMP what it doesn't know, and the character set of
// the IPTC.
TagCopy copyTags(const std::string& input, TargetFile& target, const TagCopyOptions& options, const AskExiftool& ask);

// The XMP packet in a file; empty where there is none in UTF-8, or exiftool can't tell.
std::string xmpPacketIn(const std::string& input, const AskExiftool& ask);

}  // namespace orbel
