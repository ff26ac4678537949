// KivImage: memory, construction, adoption and views.

#include "image/kiv_image.h"

#include <cstddef>
#include <memory>

// Expend leaves the first block alone and adds one of its own, which is released with the image.
struct KivImage::AddedBlock {
  float* samples;
  AddedBlock* earlier;
};

namespace {

float** newTable(int channels) {
  // A negative count would be the allocator's own exception; an image without planes is no memory either way.
  if (channels < 1) throw NO_MEMORY_ERROR();
  return new float*[static_cast<std::size_t>(channels)];
}

std::ptrdiff_t rowStep(const KivImage& image) { return image.stride / 4; }

// Spreads the entries of a table over one run of planes.
void spreadPlanes(float** table, int first, int count, float* samples, int stride, int height) {
  const std::ptrdiff_t planeStep = std::ptrdiff_t{stride / 4} * height;
  for (int i = 0; i < count; ++i) table[first + i] = samples + i * planeStep;
}

}  // namespace

void ImageMalloc(float** planes, int& stride, int channels, IppiSize size) {
  if (channels < 1) throw NO_MEMORY_ERROR();
  // A number of rows that 32 bits would wrap round is refused as none.
  const std::int64_t rows = std::int64_t{size.height} * channels;
  const bool fits = rows >= 1 && rows <= INT32_MAX;
  float* block = ippiMalloc_32f_C1(size.width, fits ? static_cast<std::int32_t>(rows) : 0, &stride);
  planes[0] = block;  // null too: an image that shares the table releases this entry
  if (block == nullptr) throw NO_MEMORY_ERROR();
  spreadPlanes(planes, 0, channels, block, stride, size.height);
}

void ImageMalloc(KivImage& image) { ImageMalloc(image.planes, image.stride, image.channels, image.size); }

unsigned char* IppiMalloc8(int width, int height, int* stride) { return ippiMalloc_8u_C1(width, height, stride); }
unsigned short* IppiMalloc16(int width, int height, int* stride) { return ippiMalloc_16u_C1(width, height, stride); }
float* IppiMalloc32(int width, int height, int* stride) { return ippiMalloc_32f_C1(width, height, stride); }

KivImage::KivImage()
    : channels(0), planes(nullptr), stride(0), size{0, 0}, storage(KIV_STORAGE_OWNED), added_(nullptr) {}

KivImage::KivImage(int width, int height, int channelCount) : KivImage() { Init(width, height, channelCount); }

KivImage::KivImage(IppiSize imageSize, int channelCount) : KivImage() { Init(imageSize, channelCount); }

KivImage::KivImage(float* data, IppiSize imageSize, int channelCount) : KivImage() {
  const std::int64_t rowBytes = std::int64_t{imageSize.width} * 4;
  if (rowBytes > INT32_MAX) throw NO_MEMORY_ERROR();
  planes = newTable(channelCount);
  channels = channelCount;
  stride = static_cast<std::int32_t>(rowBytes);
  size = imageSize;
  storage = KIV_STORAGE_WRAPPED;
  spreadPlanes(planes, 0, channels, data, stride, size.height);
}

KivImage::KivImage(KivImage* other) : KivImage() {
  if (other != this) takeFields(*other);
}

KivImage::KivImage(KivImage&& other) noexcept : KivImage() {
  takeFields(other);
  other.channels = 0;
  other.planes = nullptr;
  other.stride = 0;
  other.size = {0, 0};  // no rows either: Apply_Lut walks them
  other.storage = KIV_STORAGE_OWNED;
  other.added_ = nullptr;
}

KivImage::~KivImage() { release(); }

void KivImage::Init(int width, int height, int channelCount) { Init(IppiSize{width, height}, channelCount); }

void KivImage::Init(IppiSize imageSize, int channelCount) {
  std::unique_ptr<float*[]> table(newTable(channelCount));
  std::int32_t step = 0;
  ImageMalloc(table.get(), step, channelCount, imageSize);
  channels = channelCount;
  planes = table.release();
  stride = step;
  size = imageSize;
}

void KivImage::Init(const KivImage& other) { Init(other.size, other.channels); }

KivImage& KivImage::operator=(KivImage* other) {
  if (other == this) return *this;
  release();
  takeFields(*other);
  return *this;
}

void KivImage::takeFields(const KivImage& other) {
  channels = other.channels;
  planes = other.planes;
  stride = other.stride;
  size = other.size;
  storage = other.storage;
  added_ = other.added_;
}

bool KivImage::ownsTable() const { return storage != KIV_STORAGE_PLANE; }

void KivImage::release() {
  while (added_ != nullptr) {
    AddedBlock* const block = added_;
    added_ = block->earlier;
    ippiFree(block->samples);
    delete block;
  }
  switch (storage) {
    case KIV_STORAGE_OWNED:
      if (channels > 0) ippiFree(planes[0]);
      delete[] planes;
      break;
    case KIV_STORAGE_SECTION:
    case KIV_STORAGE_ROI:
    case KIV_STORAGE_WRAPPED:
      delete[] planes;
      break;
    case KIV_STORAGE_PLANE:
      break;
  }
  planes = nullptr;
  channels = 0;
}

KivImage KivImage::view(IppiSize viewSize, int x, int y, KivStorage viewStorage) const {
  KivImage result;
  const std::ptrdiff_t offset = y * rowStep(*this) + x;
  if (channels > 0) result.planes = newTable(channels);
  for (int i = 0; i < channels; ++i) result.planes[i] = planes[i] + offset;
  result.channels = channels;
  result.stride = stride;
  result.size = viewSize;
  result.storage = viewStorage;
  return result;
}

KivImage KivImage::Plane(int i) const {
  KivImage result;
  result.channels = channels > 0 ? 1 : 0;
  result.planes = planes + i;
  result.stride = stride;
  result.size = size;
  result.storage = KIV_STORAGE_PLANE;
  return result;
}

KivImage KivImage::Sub_Section(int mx, int my) const {
  return view({size.width - 2 * mx, size.height - 2 * my}, mx, my, KIV_STORAGE_SECTION);
}

KivImage KivImage::Sub_Section(int m) const { return Sub_Section(m, m); }

KivImage KivImage::ROI(int x, int y, int width, int height) const {
  return view({width, height}, x, y, KIV_STORAGE_ROI);
}

KivImage KivImage::ROI(const KivRect& r) const { return ROI(r.x, r.y, r.width, r.height); }

KivImage KivImage::ROI_BOX(int x0, int x1, int y0, int y1) { return ROI(x0, y0, x1 - x0 + 1, y1 - y0 + 1); }

KivImage Sub_Section_Aux(const KivImage& src, int mx, int my) { return src.Sub_Section(mx, my); }

float* KivImage::At(int plane, int x, int y) const { return planes[plane] + y * rowStep(*this) + x; }

void KivImage::Block(const KivImage& src, IppiSize bandSize, int index, int count, int overlap) {
  const int step = bandSize.height - overlap;
  if (index == count - 1) bandSize.height = src.size.height - step * (count - 1);
  KivImage band = src.view(bandSize, 0, index * step, KIV_STORAGE_SECTION);
  release();
  takeFields(band);
  band.planes = nullptr;
  band.channels = 0;
}

void KivImage::Expend(const KivImage& src) {
  const int missing = src.channels - channels;
  const std::int64_t rows = std::int64_t{missing} * size.height;
  const std::int64_t bytes = rows * stride;
  if (missing < 1 || size.width < 1 || size.height < 1 || rows > INT32_MAX || bytes > INT32_MAX) {
    throw NO_MEMORY_ERROR();
  }
  std::unique_ptr<float*[]> table(newTable(src.channels));
  std::unique_ptr<AddedBlock> block(new AddedBlock{nullptr, added_});
  // As wide as this image's rows, padding included: a view keeps its parent's stride.
  block->samples = static_cast<float*>(ippMalloc(static_cast<std::int32_t>(bytes)));
  if (block->samples == nullptr) throw NO_MEMORY_ERROR();
  for (int i = 0; i < channels; ++i) table[static_cast<std::size_t>(i)] = planes[i];
  spreadPlanes(table.get(), channels, missing, block->samples, stride, size.height);

  if (ownsTable()) delete[] planes;
  // A plane view had no table of its own and has one now.
  if (storage == KIV_STORAGE_PLANE) storage = KIV_STORAGE_SECTION;
  planes = table.release();
  channels = src.channels;
  added_ = block.release();
}
