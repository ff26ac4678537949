// KivImage: a planar picture of 32-bit floats, owner of its samples or view into another image's.
//
// Planes are apart, since all work goes plane by plane and many operations want one of them; an owner's rows start on
// 64-byte boundaries, where vector loads are cheapest, and its planes are one block, so that an image is one
// allocation. Bodies: memory, arithmetic and geometry stand here, in image/. The other members forward to free
// functions of the floors above, each floor's from one file: filters/members.cpp (neighbourhoods, detail, local
// extremes and levels), tone/members.cpp (tone, colour, blends), equalizer/members.cpp (the overlay).
//
// Rules common to its operations:
// - stride is in bytes; kernels take row steps in floats, stride / 4. size is in samples, the same for all planes.
// - Target form, Op(const KivImage& src, ...): an empty image (channels 0) is first allocated with src's channels and
//   size; a shaped one keeps its planes, isn't compared with src and is written over its own size. A view may be the
//   target: its parent changes. In-place form, Op(...): works on this image.
// - Nothing checks that images fit each other or that indices and rectangles stay inside: that is the caller's part.
// - Statuses of primitives aren't looked at: a call that a primitive refuses leaves the target as it was.
// - Memory that can't be had throws NO_MEMORY_ERROR.
// - Row padding holds no defined value. New samples aren't cleared.
// - No locks: threads may work on disjoint images or disjoint views of one image.
#pragma once

#include <cstdint>
#include <stdexcept>

#include "primitives/primitives.h"

class NO_MEMORY_ERROR {};

// A text image file that can't be written or read. what() names the file, the line where one is at fault (the first
// line is 1), and the reason.
class KivFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What an image releases in its destructor.
enum KivStorage : std::int32_t {
  KIV_STORAGE_OWNED = 0,    // its block of samples and its plane table
  KIV_STORAGE_PLANE = 1,    // nothing: its table entry is its parent's
  KIV_STORAGE_SECTION = 2,  // its plane table
  KIV_STORAGE_ROI = 3,      // its plane table
  KIV_STORAGE_WRAPPED = 4,  // its plane table; the samples are the caller's
};

struct KivRect {
  std::int32_t x, y, width, height;
};

class KivImage;
class Kernel;  // filters/kernel.h

// A deferred operand: what an arithmetic operator is to do once its result is assigned. Holds plain pointers, so the
// operands must live until then.
struct KIV_Generic_Params {
  using ConstantOp = IppStatus (*)(const float* src, int srcStep, float value, float* dst, int dstStep, IppiSize size);
  using ImageOp = IppStatus (*)(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                                int dstStep, IppiSize size);

  std::int32_t kind;  // 0: image with constant, 1: image with image
  const KivImage* first;
  const KivImage* second;  // first again for kind 0
  float value;             // for kind 0
  ConstantOp constantOp;   // for kind 0
  ImageOp imageOp;         // for kind 1; called with the second operand first
};

// Deferred operands of the blends, made by Blend_R and OverlayBlend_R. Plain pointers here too.
struct ImageBlendParameters {
  const KivImage* first;
  const KivImage* second;
  float amount;
};
struct ImageOverlayBlendParameters {
  const KivImage* first;
  const KivImage* second;
};

// Deferred dilation and erosion, made by Dilate_R and Erode_R.
struct ImageDilateParameters {
  const KivImage* image;
  unsigned char* mask;
  std::int32_t size;
};
struct ImageErodeParameters {
  const KivImage* image;
  unsigned char* mask;
  std::int32_t size;
};

class KivImage {
 public:
  std::int32_t channels;  // planes; 0 marks an empty image
  float** planes;         // the first sample of each plane
  std::int32_t stride;    // bytes from row to row, for all planes; a multiple of 64 for owners
  IppiSize size;          // of every plane
  KivStorage storage;

  // ---- Construction ----

  KivImage();  // empty
  KivImage(int width, int height, int channels);
  KivImage(IppiSize size, int channels);
  // Wraps the caller's samples: plane after plane, rows without padding. data outlives the image.
  KivImage(float* data, IppiSize size, int channels);
  // A bit copy of *other, its claim on its memory included; empty when other is this object. The caller sees to it that
  // only one of the two is ever destroyed.
  explicit KivImage(KivImage* other);
  // One plane, from a text image file as Write makes it. Lines may end with LF, CRLF or CR, the last one with nothing;
  // there may be blanks around a number and blank lines at the end. Samples are decimal numbers with or without an
  // exponent, rounded once to the nearest float, or inf and nan. One that is too small for a float gives 0, one that is
  // too large for it, or not even a double can hold, is refused. Throws KivFileError for whatever is no such file,
  // pipes and devices included, and for sizes that the file's length can't fill: before any memory is taken for them.
  explicit KivImage(const char* fileName);
  // Moves: other is left empty.
  KivImage(KivImage&& other) noexcept;
  KivImage(const KivImage&) = delete;  // samples are copied by assignment only
  virtual ~KivImage();

  // Allocates planes for an empty image.
  void Init(int width, int height, int channels);
  void Init(IppiSize size, int channels);
  void Init(const KivImage& other);  // other's shape, not its samples

  // ---- Views: no sample is copied; the parent outlives the view ----

  KivImage Plane(int i) const;                 // one plane
  KivImage Sub_Section(int mx, int my) const;  // without mx columns and my rows at each side
  KivImage Sub_Section(int m) const;           // the same with m both ways
  KivImage ROI(int x, int y, int width, int height) const;
  KivImage ROI(const KivRect& r) const;
  KivImage ROI_BOX(int x0, int x1, int y0, int y1);  // both bounds inclusive; x first

  float* At(int plane, int x, int y) const;

  // ---- Out to files and other tools ----

  // Writes plane 0 as a text image file, one number a line: the height, the width, 1, and the samples, row after row,
  // each with 30 decimals ("%1.30f", with a decimal point whatever the locale). Reading gives back the bits of samples
  // of 2e-23 and above, of zeros and of infinities; smaller samples lose digits, those below 5e-31 become zeros. A NaN
  // comes back as one, with its sign but without its payload.
  // The file appears whole or not at all: it grows beside its place, a folder that must allow that, and then replaces
  // what was there, keeping its permissions; a link to it stays. Throws KivFileError when it can't be written, when
  // something else than a regular file stands in its place, and for an empty image.
  void Write(const char* fileName) const;

  // All planes, packed: plane after plane, row after row, without padding. dst holds channels * height * width floats.
  void CopyToMatlab(float* dst) const;

  // ---- Assignment ----

  // Copies src's samples over this image's size (target form). A plane at the same address is skipped.
  KivImage& operator=(const KivImage& src);
  void Copy(const KivImage& src);
  // Evaluates a deferred operand; an empty image takes the shape of the first operand. The target may be an operand.
  KivImage& operator=(const KIV_Generic_Params& p);
  // Releases what this image holds, as its storage says, and takes over *other, which is left as it was: the caller
  // sees to it that only one of the two is ever destroyed. Does nothing when other is this object.
  KivImage& operator=(KivImage* other);

  // ---- Arithmetic: binary operators only note what is to be done ----

  KIV_Generic_Params operator-() const;
  KIV_Generic_Params operator+(float v) const;
  KIV_Generic_Params operator-(float v) const;
  KIV_Generic_Params operator*(float v) const;
  KIV_Generic_Params operator/(float v) const;
  KIV_Generic_Params operator+(const KivImage& b) const;
  KIV_Generic_Params operator-(const KivImage& b) const;
  KIV_Generic_Params operator*(const KivImage& b) const;
  KIV_Generic_Params operator/(const KivImage& b) const;

  // In place, on all planes.
  KivImage& operator+=(float v);
  KivImage& operator-=(float v);
  KivImage& operator*=(float v);
  KivImage& operator/=(float v);
  // In place, plane i of b on plane i of this, for as many planes as b has.
  KivImage& operator+=(const KivImage& b);
  KivImage& operator-=(const KivImage& b);
  KivImage& operator/=(const KivImage& b);
  // The same, but a b of one plane multiplies every plane of this.
  KivImage& operator*=(const KivImage& b);

  void Sqrt(const KivImage& src);
  void Sqrt();
  void Exp();
  void Log(const KivImage& src);  // natural
  void Log();
  void Abs(const KivImage& src);
  void Abs();

  // Smallest and largest sample of plane 0.
  float Min() const;
  float Max() const;
  // Reserved names: they change nothing.
  void Min(const KivImage& src, int plane);
  void Max(const KivImage& src, int plane);

  // ---- Geometry ----

  // Linear resampling of src to the given size, into the top-left corner of this image, for src's planes. A source of
  // one row or column is refused: the target stays as it was. src holds other samples than this.
  void Resize(const KivImage& src, int width, int height);
  void Resize(const KivImage& src, IppiSize size);
  // this(y, x) = src(x, y); an empty target is allocated with src's size turned. src may be this where it is square.
  void Transpose(const KivImage& src);
  // Places src, which holds other samples, at (margin, margin) of this image, which is shaped already, and repeats its
  // edges outwards.
  void Pad(const KivImage& src, int margin);
  // Refills the outer margin rows and columns from the edge of the region within.
  void Pad(int margin);
  // Makes this object a view of rows index * (size.height - overlap) and on of src; the last of count bands reaches
  // src's last row. What this object held is released first; src is another object.
  void Block(const KivImage& src, IppiSize size, int index, int count, int overlap);
  // Adds planes until there are as many as src has. src must have more. The samples of the new planes are undefined.
  void Expend(const KivImage& src);
  // Circular shifts by half the size, rounded down (FftShift) or up; each undoes the other. For one plane.
  void FftShift();
  void IfftShift();

  // ---- Neighbourhoods ----

  // Whatever lies beyond src is its edge samples repeated, unless an operation says otherwise. Where it isn't said that
  // this and src may be the same image, they are different ones.

  // What lies beyond the image in ApplyBoxFilter.
  enum KivBorderType : std::int32_t {
    KIV_BORDER_CONST = 1,      // a given value
    KIV_BORDER_IN_MEM = 2,     // samples in memory: src is a view with radius samples around it
    KIV_BORDER_REPLICATE = 3,  // the edge sample, repeated
    KIV_BORDER_MIRROR = 4,     // reflection about the edge sample, which isn't repeated
  };

  // The mean over squares of 2 radius + 1 samples a side, at the same cost for every radius: running sums, see
  // ippiFilterBoxBorder_32f_C1R. src's planes, several of them on several threads; this may be src. A negative radius
  // leaves the target as it was.
  void Box_Blur(const KivImage& src, int radius);
  // The same with the border of choice (another than the four leaves the target as it was). divideByArea divides the
  // means in all planes of this by the number of samples once more.
  void ApplyBoxFilter(const KivImage& src, int radius, KivBorderType border, float borderValue, bool divideByArea);

  // The kernel's taps along the rows, then along the columns, sums in ascending order of the taps and in single
  // precision. src is a view with kernel.radius samples around it, so nothing is repeated. passes is 0 for both, 1 for
  // the rows alone, 2 for the columns alone; any other leaves the target as it was. Rows run in parallel.
  void Filter(const KivImage& src, const Kernel& kernel, int passes);
  // The same, both passes, for a src without such a margin; this may be src.
  void Filter_With_Pad(const KivImage& src, const Kernel& kernel);

  // ---- Gaussians of standard deviation sigma. All but the box and the recursive form reach ceil(multiplier * sigma)
  // samples each way.

  // Plane 0 only, on four threads. A sigma not above 0 leaves the target as it was.
  void GaussBlurFast(const KivImage& src, float sigma, int factor);
  // As GaussBlurFast, and this may be src. A sigma above 3 on an image whose smaller side is above 400 works on a
  // reduced image, halved until one of them no longer is; then plane 0 comes back blurred, the planes above it,
  // as far as both images have them, resampled from the reduced image.
  void GaussBlurDecimate(const KivImage& src, float sigma, int kernelMultiplier);
  // All planes; this may be src. With borderIsReplicate false, src is a view with as many samples around it as the
  // kernel reaches. What the primitives refuse is thrown as an int holding their status: -5 for a sigma not above 0.
  void Gauss_Blur(const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate);
  // The same in 16 and 8 bits: samples in the range of these integers, not 0 to 1, are cut to whole levels, and so is
  // the result.
  void GaussBlur16(const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate);
  void GaussBlur8(const KivImage& src, float sigma, int kernelMultiplier, bool borderIsReplicate);
  // As many box means, of two neighbouring odd sides, whose variances add up to about sigma's, all planes. this may be
  // src. passes below 1, or a sigma that is NaN, leave the target as it was.
  void Gaussian_Box_Blur(const KivImage& src, float sigma, int passes);
  // The recursive filter of third order of Young and van Vliet, "Recursive implementation of the Gaussian filter"
  // (1995), forward and backward along rows and columns, all planes: at the same cost for every sigma, and within some
  // percent of the Gaussian's peak (sigma 1: 10, 2: 6, 3 to 10: 4, 50: 2.5). Double precision along a line. this may be
  // src. A sigma below about 0.306, where the filter's formula would sharpen, or NaN, copies src.
  void Gaussian_IIR_Blur(const KivImage& src, double sigma);
  // Allocates this and scratch like src where they are empty; changes no sample.
  void GaussBlurSSE(const KivImage& src, KivImage& scratch, float sigma, int kernelMultiplier);

  // ---- Detail: what a Gaussian takes away. The target may be src ----

  // Detail around grey 0.5, of half strength: 0.5 + 0.5 * (src - blur), each plane with its own
  // GaussBlurDecimate(sigma, 4), as far as both images have planes. A sigma not above 0: the blur is the source itself,
  // so the result is flat. The flag is not used.
  void HighPassFilter(const KivImage& src, float sigma, bool unused);
  // The same of full strength, src - blur + 0.5, on plane 0; the planes above it hold what
  // GaussBlurDecimate(src, sigma, kernelMultiplier) leaves there. A sigma or a kernelMultiplier not above 0: the blur
  // is the source itself, as above.
  void HighPassPS(const KivImage& src, float sigma, int kernelMultiplier);
  // Sharpens: clamp(src + amount / 100 * detail) * mask + src * (1 - mask), where detail = src - blur, in two parts
  // each limited to 0 to 1, and the mask is 1 where the pixel is brighter than its blur by more than threshold, in all
  // planes at once, and itself blurred. Both blurs are Gauss_Blur(sigma, 5, true); its statuses are thrown.
  void UsmPS(const KivImage& src, float amount, float sigma, float threshold);

  // ---- Tone: each step of a formula is rounded to single precision; nothing clips unless it says so ----

  // x^gamma as exp(ln(x) * gamma): minus infinity or NaN from the logarithm goes into the exponential. A gamma of 1
  // copies.
  void ApplyGammaCurve(const KivImage& src, float gamma);
  void ApplyGammaCurve(float gamma);

  // With s(v) = 1 / (1 + exp(-v)), (s(slope * (x - midpoint)) - lo) / (hi - lo): lo is the logistic at x = 0 less 1e-6,
  // hi that at x = 1 and 1e-6 more.
  void SigmoidalCurve(const KivImage& src, float slope, float midpoint);
  void SigmoidalCurve(float slope, float midpoint);

  // (s(slope * x) - lo) / (hi - lo) * (high - low) + low, with lo and hi the logistic at low and high: through
  // (low, low) and (high, high). ApplySigmoidalCurveKiv is the same curve in one pass. Where hi equals lo, the division
  // is left out.
  void SigmoidalCurve2(const KivImage& src, float slope, float low, float high);
  void SigmoidalCurve2(float slope, float low, float high);

  // Steepens around 0.5 with a positive contrast, (s(c * (x - 0.5)) - lo) / (hi - lo), and flattens with a negative
  // one, by the inverse of that curve for -c. 0 and 1 stay where they are. A contrast from -0.5 to 0.5 copies.
  void Sigmoidal_Contrast(const KivImage& src, float contrast);
  void Sigmoidal_Contrast(float contrast);

  // ltValue below ltThreshold, gtValue above gtThreshold; NaN becomes ltValue. An ltThreshold above gtThreshold is
  // refused.
  void Threshold(const KivImage& src, float ltThreshold, float ltValue, float gtThreshold, float gtValue);
  void Threshold(float ltThreshold, float ltValue, float gtThreshold, float gtValue);
  void Threshold_I(float limit);                        // clips to 0 to limit
  void Threshold_GT(const KivImage& src, float limit);  // min(src, limit)
  void Threshold_LT(const KivImage& src, float limit);  // max(src, limit)

  // (x - low) / (high - low); for low = high the division is refused, which leaves x - low.
  void Stretch_Range(float low, float high);
  void Stretch_Range();  // with the smallest and the largest sample of plane 0, on all planes

  // Plane 0 becomes table[x * count], x to the nearest entry; the other planes are only multiplied by count (less
  // 0.001, as plane 0 is). table has count + 1 entries. Beyond 0 to 1 the nearest entry counts, for NaN the first. A
  // null table or a negative count changes nothing.
  void Apply_Lut(float* table, int count);
  // A reserved name: it changes nothing.
  void ApplyLut(KivImage& image, float* first, float* second, int count);

  // ---- Colour: src has three planes, R, G, B or L, a, b; nothing clips. The target may be src ----

  // Plane c = (twist[c][3] + twist[c][0] * s0) + (twist[c][2] * s2 + twist[c][1] * s1), of src's planes s. Returns the
  // primitive's status. YUVtoRGB (tone/colour_conversion.h) is such a matrix.
  IppStatus Color_Twist(const KivImage& src, const float (&twist)[3][4]);
  IppStatus Color_Twist(const float (&twist)[3][4]);

  // Grey and lightness go to plane 0, rows in parallel; an empty target gets one plane of src's size.
  // (p0 * r + p1 * g) + p2 * b; weights holds r, g, b.
  void ColorToGraySSE(const KivImage& src, float r, float g, float b);
  void ColorToGraySSE(const KivImage& src, float* weights);
  // Of gamma-encoded RGB, 0 to 1: ExtractLChannelKiv with gammaMode 1, primariesMode 2.
  void ConvertRgbToLSSE(const KivImage& src);

  // Linear RGB to CIE L*a*b*, L from 0 to 100, and back: ippiRGBToLab_32f_C3R and ippiLabToRGB_32f_C3R have the
  // formulas. Over the size that both images have. Where there is no memory for the pixels, the target keeps its
  // samples, and nothing is thrown.
  void Convert_RGB_to_LAB(const KivImage& src);
  void Convert_RGB_to_LAB();
  void Convert_LAB_To_RGB(const KivImage& src);
  void Convert_LAB_To_RGB();

  // Difference of each pixel of lab from the colour reference (L, a, b), after CIE 1994 for graphic arts:
  //   sqrt((wl dL)^2 + (wc dC / (1 + 0.045 C))^2 + (wh dH / (1 + 0.015 C))^2), dH = sqrt(da^2 + db^2 - dC^2),
  // with C the pixel's chroma and weights wh, wc, wl in this order. NaN where rounding takes dH's square below 0.
  // On plane 0, the planes above it stay; an empty target gets one plane of lab's size. In place: this image is lab.
  void Delta_E(const KivImage& lab, float* reference, float* weights);
  void Delta_E(float* reference, float* weights);

  // ---- Blends: no clipping. The target may be any operand ----

  // 2 * base * top where base is below 0.5, 1 - 2 * (1 - base) * (1 - top) above, their mean at 0.5. Each operand has
  // the target's planes; base may have one for all of them.
  void OverlayBlend(const KivImage& base, const KivImage& top);
  // The same on plane 0 by BlendModeOverlayKiv's formula, rows in parallel.
  void OverlayBlendSSE(const KivImage& base, const KivImage& top);

  // weight * a + (1 - weight) * b on plane 0, the sum in double precision. An empty target stays empty.
  void AlphaCombine(const KivImage& a, const KivImage& b, float weight);
  void AlphaCombine(const KivImage& b, float weight);  // with this image as a

  // filtered * w + base * (1 - w). The weight runs linearly from shadows at luminance 0 over midtones at 0.5 to
  // highlights at 1, limited to 0 to 1. One w for all planes: from 0.299, 0.587, 0.114 of base's planes when it has
  // three, else from its plane 0.
  void ApplyTonalMask(const KivImage& base, const KivImage& filtered, float shadows, float midtones, float highlights);

  // Deferred: nothing is computed until the result is assigned, and the operands must live until then.
  ImageBlendParameters Blend_R(const KivImage& second, float amount) const;
  ImageOverlayBlendParameters OverlayBlend_R(const KivImage& second) const;
  // amount * (2 * first + second - 1) + (1 - amount) * second: linear light at the given opacity, over second.
  KivImage& operator=(const ImageBlendParameters& p);
  // OverlayBlend with first as base and second as top.
  KivImage& operator=(const ImageOverlayBlendParameters& p);

  // ---- Local extremes and levels ----

  // Largest (Dilate) and smallest (Erode) sample under the set bytes of mask, which has size * size bytes, on all
  // planes; target form. insideOnly false: the mask is centred on the sample (for an even size one sample more lies to
  // the right and below) and what lies beyond the edge doesn't count. True: only where the mask lies whole inside src;
  // the result is size - 1 samples narrower and lower. NaN doesn't count; where nothing does, the sample in the middle
  // stands. A full mask costs the same whatever its size. A size below 1 does nothing. this may be src.
  void Dilate(const KivImage& src, unsigned char* mask, int size, bool insideOnly);
  void Erode(const KivImage& src, unsigned char* mask, int size, bool insideOnly);
  // The same as deferred operands, at src's size.
  ImageDilateParameters Dilate_R(unsigned char* mask, int size) const;
  ImageErodeParameters Erode_R(unsigned char* mask, int size) const;
  KivImage& operator=(const ImageDilateParameters& p);
  KivImage& operator=(const ImageErodeParameters& p);

  // Moves each sample by its local black and white point, the extremes over a square of side 2 * radius + 1, smoothed:
  // with d = white - black, (1 - d) * src + (src - black). Unclipped. detailOverlay lays the high-passes of both points
  // over it. Target form, on plane 0 alone. A radius below 0 counts as 0.
  void LocalAutoLevels(const KivImage& src, int radius, bool detailOverlay);
  // The same formula on all planes by whole-image steps and the recursive Gaussian, without the margin that these can't
  // serve: the result is 2 * radius + 8 samples narrower and lower than src.
  void LocalAutoLevelsOld(const KivImage& src, int radius, bool detailOverlay);
  // Up to two passes of LocalAutoLevels with detail overlay, mixed in by amount: amount * levels + (1 - amount) * src.
  // A radius counts as its whole part; one not above 0 leaves its pass out, and the first one's place takes a copy of
  // src. The passes work on plane 0 alone. Target form.
  void ApplyLocalContrast(const KivImage& src, float radius1, float amount1, float radius2, float amount2);
  // Edge-preserving smoothing by a linear model of each window of side 2 * radius + 1 (guided filter of He, Sun and
  // Tang, ECCV 2010, with the image as its own guide): mean(a) * src + mean((1 - a) * mean), a = v / (v + eps) with v
  // the window's variance. Edge samples are repeated. Target form, all planes. A radius below 0 counts as 0.
  void ApplyLocalLinearFilter(const KivImage& src, int radius, float eps);

  // ---- Overlay ----

  // Darkens, in all planes, both diagonals and a stripe right of the centre to 0.8 of their value; thickness in
  // samples. What falls outside the rows is clipped.
  void CrossIt_I(int thickness);

 private:
  struct AddedBlock;

  void release();
  void takeFields(const KivImage& other);
  bool ownsTable() const;
  KivImage view(IppiSize viewSize, int x, int y, KivStorage viewStorage) const;
  template <typename PlaneOp>
  void eachPlane(int count, PlaneOp op);
  void shift(int dx, int dy);

  AddedBlock* added_;  // blocks of planes that Expend added
};

// ---- Allocation ----

// One block for channels planes of the given size; writes stride and the table's entries. The first entry becomes null
// where there is no memory.
void ImageMalloc(float** planes, int& stride, int channels, IppiSize size);
// The same for an image whose planes table, channels and size are set.
void ImageMalloc(KivImage& image);

// The primitives' image allocators under one naming; they return null where those do.
unsigned char* IppiMalloc8(int width, int height, int* stride);
unsigned short* IppiMalloc16(int width, int height, int* stride);
float* IppiMalloc32(int width, int height, int* stride);

// The view that src.Sub_Section(mx, my) returns.
KivImage Sub_Section_Aux(const KivImage& src, int mx, int my);
