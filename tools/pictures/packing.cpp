#include "pictures/packing.h"

#include <algorithm>

#include "files/failure.h"
#include "pictures/file_headers.h"
#include "pictures/vips_picture.h"

namespace orbel {

namespace {

constexpr const char* keepWord = "keep";

// Those that --compression takes.
std::string wordsFor(const FileFormat& format) {
  std::string text = keepWord;
  for (const Compression& c : format.saver.compressions) text += ", " + c.word;
  return text;
}

const Compression* find(const FileFormat& format, const std::string& word) {
  const auto& all = format.saver.compressions;
  const auto found = std::find_if(all.begin(), all.end(), [&](const Compression& c) { return c.word == word; });
  return found == all.end() ? nullptr : &*found;
}

void keepCompression(const std::string& was, const FileFormat& format, SaveOptions& options, Notes& notes) {
  if (find(format, was) != nullptr) {
    options.compression = was;
  } else if (!format.saver.standIn.empty()) {
    options.compression = format.saver.standIn;
    notes.push_back("its compression (" + (was.empty() ? "not known" : was) + ") isn't kept; packed by " +
                    format.saver.standIn + ", without loss");
  }
}

std::optional<ChromaShare> chromaOf(const std::string& input, const Picture& opened) {
  if (input != pipeName) return jpegChroma(input);
  // The library tells whether the chroma is whole; otherwise it takes all ways of sharing for one.
  const char* const field = "jpeg-chroma-subsample";
  const vips::VImage& image = imageOf(opened);
  const bool whole = image.get_typeof(field) != 0 && image.get_string(field) == std::string("4:4:4");
  return whole ? std::optional<ChromaShare>(ChromaShare{}) : std::nullopt;
}

void keepChroma(const ChromaShare& was, SaveOptions& options, Notes& notes) {
  options.halfChroma = was.across == 2 && was.down == 2;
  const bool full = was.across == 1 && was.down == 1;
  if (!full && !*options.halfChroma) {
    const std::string share = std::to_string(was.across) + " x " + std::to_string(was.down);
    notes.push_back("its chroma, one sample for " + share + " pixels, comes back in full (4:4:4)");
  }
}

}  // namespace

void requireThatFormatKnows(const FileFormat& format, const SaveOptions& options, const std::string& name) {
  const auto refuse = [&](const std::string& why) { throw Failure(name, why, Cause::OutputFormat); };
  if (options.quality && format.saver.quality == 0) refuse(format.name + " files have no --quality");
  if (!options.compression || *options.compression == keepWord) return;
  if (format.saver.compressions.empty()) refuse(format.name + " files have no --compression");
  if (find(format, *options.compression) == nullptr) {
    refuse("--compression for " + format.name + " files is one of: " + wordsFor(format));
  }
}

SaveOptions keepPacking(const std::string& input, int page, const Picture& opened, const FileFormat& format,
                        const SaveOptions& asked, Notes& notes) {
  SaveOptions options = asked;
  const FileFormat* const was = formatOf(opened);
  if (options.compression == keepWord) options.compression.reset();
  if (was == nullptr || was->name != format.name) return options;
  // Who asks for a quality wants it lossy.
  if (was->loader.compressionOf != nullptr && !options.compression && !options.quality) {
    const std::string compression = input == pipeName ? "" : was->loader.compressionOf(input, page);
    keepCompression(compression, format, options, notes);
  }
  if (format.saver.halvesChroma) {
    if (const auto chroma = chromaOf(input, opened)) keepChroma(*chroma, options, notes);
  }
  return options;
}

void setPacking(const FileFormat& format, SampleType samples, const SaveOptions& options, vips::VOption& saver) {
  if (format.saver.quality != 0) saver.set("Q", options.quality.value_or(format.saver.quality));
  for (const SaverOption& option : format.saver.options) saver.set(option.name, option.value);
  if (const Compression* const compression = options.compression ? find(format, *options.compression) : nullptr) {
    saver.set(compression->option.name, compression->option.value);
  }
  if (format.saver.predicts) {
    saver.set("predictor", samples == SampleType::floats ? VIPS_FOREIGN_TIFF_PREDICTOR_FLOAT
                                                         : VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL);
  }
  if (options.halfChroma) {
    saver.set("subsample_mode", *options.halfChroma ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF);
  }
}

}  // namespace orbel
