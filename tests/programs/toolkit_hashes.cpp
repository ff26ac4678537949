// toolkit_hashes: the toolkit's operations on random images of several sizes, half of them with samples that are no
// colours: a line with a digest of every sample for each.
#include <cstdio>
#include <initializer_list>

#include "equalizer/bilateral_filter.h"
#include "filters/kernel.h"
#include "filters/local_auto_levels.h"
#include "filters/unsharp_mask.h"
#include "image/kiv_image.h"
#include "programs/hashes.h"
#include "tone/blend_kernels.h"
#include "tone/colour_conversion.h"
#include "tone/tone_curves.h"

namespace {

using In = const KivImage&;
using Out = KivImage&;

unsigned char mask[] = {0, 1, 0, 1, 1, 1, 1, 1, 0};

void resize(Out out, In a, IppiSize size) {
  out.Init(size, a.channels);
  out.Resize(a, size);
}

// For functions on planes: the first of each image, with a target that begins as a copy of a.
struct Planes {
  Planes(Out out, In a, In b)
      : dst((out = a).At(0, 0, 0)),
        first(a.At(0, 0, 0)),
        second(b.At(0, 0, 0)),
        height(a.size.height),
        width(a.size.width),
        step(a.stride / 4) {}
  float* dst;
  float* first;
  float* second;
  int height, width, step;
};

// a and b have three planes and one size; out begins empty.
const struct {
  const char* name;
  void (*run)(Out out, In a, In b);
} operations[] = {
    {"a + b", [](Out out, In a, In b) { out = a + b; }},
    {"a - b", [](Out out, In a, In b) { out = a - b; }},
    {"a * b", [](Out out, In a, In b) { out = a * b; }},
    {"a / b", [](Out out, In a, In b) { out = a / b; }},
    {"a / 0.3", [](Out out, In a, In) { out = a / 0.3F; }},
    {"-a", [](Out out, In a, In) { out = -a; }},
    {"Sqrt", [](Out out, In a, In) { out.Sqrt(a); }},
    {"Exp", [](Out out, In a, In) { (out = a).Exp(); }},
    {"Log", [](Out out, In a, In) { out.Log(a); }},
    {"Abs", [](Out out, In a, In) { out.Abs(a); }},
    {"Min, Max", [](Out out, In a, In) { *(out = a).At(0, 0, 0) = a.Min() + a.Max(); }},
    {"Resize, larger",
     [](Out out, In a, In) {
       resize(out, a, {2 * a.size.width - 1, a.size.height + 7});
     }},
    {"Resize, smaller",
     [](Out out, In a, In) {
       resize(out, a, {a.size.width * 5 / 8 + 1, a.size.height / 3 + 1});
     }},
    {"Transpose", [](Out out, In a, In) { out.Transpose(a); }},
    {"Pad",
     [](Out out, In a, In) {
       out.Init(a.size.width + 10, a.size.height + 10, 3);
       out.Pad(a, 5);
     }},
    {"Box_Blur", [](Out out, In a, In) { out.Box_Blur(a, 3); }},
    {"ApplyBoxFilter, constant",
     [](Out out, In a, In) { out.ApplyBoxFilter(a, 2, KivImage::KIV_BORDER_CONST, 0.4F, false); }},
    {"ApplyBoxFilter, mirror",
     [](Out out, In a, In) { out.ApplyBoxFilter(a, 4, KivImage::KIV_BORDER_MIRROR, 0, true); }},
    {"Filter, tent", [](Out out, In a, In) { out.Filter(a.Sub_Section(2), Kernel(KERNEL_TYPE_TENT, 2, 0), 0); }},
    {"Filter_With_Pad", [](Out out, In a, In) { (out = a).Filter_With_Pad(a, Kernel(KERNEL_TYPE_GAUSS, 4, 2)); }},
    {"Gauss_Blur", [](Out out, In a, In) { out.Gauss_Blur(a, 1.7F, 6, true); }},
    {"Gauss_Blur, samples around", [](Out out, In a, In) { out.Gauss_Blur(a.Sub_Section(9), 2.1F, 4, false); }},
    {"GaussBlur16", [](Out out, In a, In) { (out = a * 65535.0F).GaussBlur16(out, 1.3F, 6, true); }},
    {"GaussBlur8", [](Out out, In a, In) { (out = a * 255.0F).GaussBlur8(out, 2.1F, 6, true); }},
    {"GaussBlurFast", [](Out out, In a, In) { (out = a).GaussBlurFast(a, 2.4F, 4); }},
    {"GaussBlurDecimate", [](Out out, In a, In) { (out = a).GaussBlurDecimate(a, 9, 6); }},
    {"Gaussian_Box_Blur", [](Out out, In a, In) { (out = a).Gaussian_Box_Blur(a, 3.5F, 3); }},
    {"Gaussian_IIR_Blur", [](Out out, In a, In) { (out = a).Gaussian_IIR_Blur(a, 3.1); }},
    {"HighPassFilter", [](Out out, In a, In) { (out = a).HighPassFilter(a, 2.5F, false); }},
    {"HighPassPS", [](Out out, In a, In) { (out = a).HighPassPS(a, 2.5F, 6); }},
    {"UsmPS", [](Out out, In a, In) { (out = a).UsmPS(a, 1.4F, 1.5F, 0.02F); }},
    {"ApplyGammaCurve", [](Out out, In a, In) { out.ApplyGammaCurve(a, 0.45F); }},
    {"SigmoidalCurve", [](Out out, In a, In) { out.SigmoidalCurve(a, 7, 0.45F); }},
    {"SigmoidalCurve2", [](Out out, In a, In) { out.SigmoidalCurve2(a, 6, 0.1F, 0.85F); }},
    {"Sigmoidal_Contrast", [](Out out, In a, In) { out.Sigmoidal_Contrast(a, 5); }},
    {"Threshold", [](Out out, In a, In) { out.Threshold(a, 0.2F, 0.1F, 0.8F, 0.9F); }},
    {"Threshold_I", [](Out out, In a, In) { (out = a).Threshold_I(0.7F); }},
    {"Stretch_Range", [](Out out, In a, In) { (out = a).Stretch_Range(); }},
    {"Color_Twist", [](Out out, In a, In) { out.Color_Twist(a, YUVtoRGB); }},
    {"ColorToGraySSE", [](Out out, In a, In) { (out = a).ColorToGraySSE(a, 0.3F, 0.59F, 0.11F); }},
    {"ConvertRgbToLSSE", [](Out out, In a, In) { (out = a).ConvertRgbToLSSE(a); }},
    {"Convert_RGB_to_LAB", [](Out out, In a, In) { out.Convert_RGB_to_LAB(a); }},
    {"Convert_LAB_To_RGB", [](Out out, In a, In) { out.Convert_LAB_To_RGB(a); }},
    {"Delta_E",
     [](Out out, In a, In) {
       float reference[] = {0.6F, 0.1F, -0.2F};
       float weights[] = {1.0F, 0.5F, 0.7F};
       (out = a).Delta_E(a, reference, weights);
     }},
    {"OverlayBlend", [](Out out, In a, In b) { out.OverlayBlend(a, b); }},
    {"AlphaCombine", [](Out out, In a, In b) { (out = a).AlphaCombine(a, b, 0.35F); }},
    {"ApplyTonalMask", [](Out out, In a, In b) { out.ApplyTonalMask(a, b, 0.9F, 0.4F, 0.2F); }},
    {"Blend_R", [](Out out, In a, In b) { out = a.Blend_R(b, 0.6F); }},
    {"Dilate", [](Out out, In a, In) { (out = a).Dilate(a, mask, 3, false); }},
    {"Erode", [](Out out, In a, In) { (out = a).Erode(a, mask, 3, true); }},
    {"LocalAutoLevels", [](Out out, In a, In) { (out = a).LocalAutoLevels(a, 4, true); }},
    {"LocalAutoLevelsOld", [](Out out, In a, In) { out.LocalAutoLevelsOld(a, 3, false); }},
    {"ApplyLocalContrast", [](Out out, In a, In) { (out = a).ApplyLocalContrast(a, 3, 0.5F, 6, 0.3F); }},
    {"ApplyLocalLinearFilter", [](Out out, In a, In) { (out = a).ApplyLocalLinearFilter(a, 3, 0.01F); }},
    {"CrossIt_I", [](Out out, In a, In) { (out = a).CrossIt_I(2); }},
    {"BilateralFilterKiv",
     [](Out out, In a, In b) {
       const Planes p(out, a, b);
       BilateralFilterKiv(p.dst, p.first, unsigned(p.height), unsigned(p.width), unsigned(p.step), 4, 2.3F, 0.1F, 0, 1);
     }},
    {"LocalAutoLevelsKiv",
     [](Out out, In a, In b) {
       const Planes p(out, a, b);
       LocalAutoLevelsKiv(p.first, p.first, p.second, p.dst, p.height, p.step);
     }},
    {"ApplyUnsharpMaskKiv",
     [](Out out, In a, In b) {
       const Planes p(out, a, b);
       ApplyUnsharpMaskKiv(p.dst, p.first, p.second, p.height, p.width, p.step, 0.8F);
     }},
    {"CalcDetailsLayerMergeGrain",
     [](Out out, In a, In b) {
       const Planes p(out, a, b);
       CalcDetailsLayerMergeGrain(p.dst, p.first, p.second, p.height, p.width, p.step);
     }},
    {"ExtractLChannelKiv",
     [](Out out, In a, In b) {
       const Planes p(out, a, b);
       ExtractLChannelKiv(p.dst, p.first, a.At(1, 0, 0), a.At(2, 0, 0), p.height, p.width, p.step, 1, 1);
     }},
};

constexpr IppiSize sizes[] = {{23, 41}, {67, 43}, {130, 97}, {401, 35}, {64, 64}};

void fill(KivImage& image, bool special) {
  for (int plane = 0; plane < image.channels; ++plane) {
    for (int y = 0; y < image.size.height; ++y) {
      for (int x = 0; x < image.size.width; ++x) {
        const float number = float(below(16384)) / 12288.0F - 0.1F;
        *image.At(plane, x, y) = special ? orSpecial(number) : number;
      }
    }
  }
}

}  // namespace

int main() {
  for (const auto& operation : operations) {
    for (const IppiSize size : sizes) {
      for (const bool special : {false, true}) {
        KivImage a(size, 3);
        KivImage b(size, 3);
        fill(a, special);
        fill(b, special);
        KivImage out;
        int status = 0;
        try {
          operation.run(out, a, b);
        } catch (const int refused) {
          status = refused;
        }
        Digest digest;
        for (int plane = 0; plane < out.channels; ++plane) {
          for (int y = 0; y < out.size.height; ++y) {
            digest.addFloats(out.At(plane, 0, y), sizeof(float) * std::size_t(out.size.width));
          }
        }
        std::printf("%s %dx%d %d %016llX\n", operation.name, size.width, size.height, status, digest.value());
      }
    }
  }
}
