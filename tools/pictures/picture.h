// A picture from a file, or for one: its samples where they lie in memory, and what its file says about it beside them.
// The image library is behind it, and known in this folder alone.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "api/orbel.h"

namespace orbel {

// The standard input or output in the place of a file.
inline const std::string pipeName = "-";

using Notes = std::vector<std::string>;

enum class SampleType { bytes, words, floats };  // 8 bits, 16 bits with white at 65535, 32-bit floats

int bytesOf(SampleType samples);  // of a sample: 1, 2 or 4
int depthOf(SampleType samples);  // 8, 16 or 32

struct Rectangle {
  int x;
  int y;
  int width;
  int height;
};

// A handle: copies are the same picture. Colour is three channels, grey one, and one of alpha may follow.
class Picture {
 public:
  int width() const;
  int height() const;
  int colours() const;  // 1 or 3
  bool hasAlpha() const;
  int channels() const { return colours() + (hasAlpha() ? 1 : 0); }
  SampleType samples() const;
  int orientation() const;     // as in EXIF: 1, which is upright, to 8
  std::string loader() const;  // of the image library: "jpeg"; empty where the picture came by none

  // Without samples, of which no more has to be known than the header.
  orbel_picture shape() const;

  // Where the samples of a decoded picture lie, interleaved; writable as long as there is the picture.
  orbel_picture record() const;

  struct Impl;  // see vips_picture.h
  explicit Picture(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}
  const Impl& impl() const { return *impl_; }

 private:
  std::shared_ptr<const Impl> impl_;
};

// A picture whose header has been read; its samples are decoded when it is read to its end, once. What was converted to
// get RGB or grey in one of the types of samples is noted. Of several pages or frames, page (from 1) takes one. Throws
// Failure for what is no such picture: other colour models, several pages and none chosen, other sample types, a
// camera's raw data, and files that can't be read.
Picture openPicture(const std::string& name, Notes& notes, std::optional<int> page = {});

// The whole picture in memory of its own. Throws Failure about the file when it can't be read to its end.
Picture decodePicture(const Picture& opened, const std::string& name);

// Reads the samples and keeps none of them. Throws Failure as decodePicture does.
void requireThatItDecodes(const Picture& opened, const std::string& name);

// Both, for whoever does without the notes.
Picture loadPicture(const std::string& name, std::optional<int> page = {});

// Throws Failure for what can't be read, isn't a regular file, or is empty.
void requireFileWithContent(const std::string& name);

// A decoded picture of the same size, channels and metadata, in memory of its own. Its alpha is the picture's, scaled
// from white to white; its colours are undefined. Throws std::bad_alloc.
Picture roomFor(const Picture& like, SampleType samples);

// The picture as it is shown, decoded: turned upright, and without alpha. Throws Failure about the picture's file.
Picture uprightColours(const Picture& decoded);

// Throws Failure about the file for a part that reaches beyond the picture as it is shown.
void requireThatPartLiesIn(const Rectangle& part, const Picture& picture, const std::string& name);

// Where a part of the picture as it is shown lies in the picture as it is stored, which its orientation will turn.
Rectangle asStored(const Rectangle& shown, const Picture& picture);

// A part of a decoded picture as it is stored, in memory of its own. Throws Failure about the picture's file.
Picture cutOut(const Picture& decoded, const Rectangle& part);

// The picture's XMP packet; empty where it has none.
std::string xmpOf(const Picture& picture);

// The same picture with this packet in the place of its own, for savePicture. The first stays as it is.
Picture withXmp(const Picture& picture, const std::string& packet);

}  // namespace orbel
