// gallery PHOTO FOLDER: every operation of the toolkit on one photograph, as pairs of pictures (before, after) in
// FOLDER and a page beside it, FOLDER.md, that shows them.

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "files/failure.h"
#include "filters/kernel.h"
#include "filters/unsharp_mask.h"
#include "image/kiv_image.h"
#include "pictures/library.h"
#include "pictures/vips_picture.h"
#include "tone/blend_kernels.h"
#include "tone/tone_curves.h"

using namespace orbel;

namespace {

using vips::VImage;

constexpr float white8 = 255.0F;

struct Operation {
  std::string name;   // of the picture file
  std::string title;  // what was called
  std::function<void(KivImage& dst, const KivImage& src)> apply;
};

struct Chapter {
  std::string title;
  std::vector<Operation> operations;
};

KivImage planesOf(const Picture& picture) {
  const orbel_picture from = picture.record();
  KivImage image(from.width, from.height, from.channels);
  orbel_picture to;
  orbel_picture_planar(&to, sizeof to, ORBEL_FLOAT32, from.width, from.height, from.channels, image.planes[0],
                       image.stride);
  if (orbel_convert(&from, &to) != ORBEL_OK) throw std::bad_alloc();
  return image;
}

// Both pictures side by side. A smaller result stands in the middle of its half.
void save(const KivImage& before, const KivImage& after, const std::string& name) {
  const int width = before.size.width;
  const int height = before.size.height;
  const std::size_t rowSamples = static_cast<std::size_t>(width) * 2 * 3;
  std::vector<unsigned char> samples(rowSamples * static_cast<std::size_t>(height), 255);
  const auto put = [&](const KivImage& image, int left) {
    const int x0 = left + (width - image.size.width) / 2;
    const int y0 = (height - image.size.height) / 2;
    for (int p = 0; p < 3; ++p) {
      KivImage bytes;
      bytes = image.Plane(p) * white8;
      bytes.Threshold_I(white8);
      for (int y = 0; y < bytes.size.height; ++y) {
        const std::size_t row = static_cast<std::size_t>(y0 + y) * rowSamples;
        for (int x = 0; x < bytes.size.width; ++x) {
          const std::size_t pixel = row + static_cast<std::size_t>(x0 + x) * 3;
          samples[pixel + static_cast<std::size_t>(p)] = static_cast<unsigned char>(std::lround(*bytes.At(0, x, y)));
        }
      }
    }
  };
  put(before, 0);
  put(after, width);
  VImage::new_from_memory(samples.data(), samples.size(), 2 * width, height, 3, VIPS_FORMAT_UCHAR)
      .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
      .jpegsave(name.c_str(), VImage::option()->set("Q", 85));
}

using PlaneOperation = std::function<void(KivImage& dst, const KivImage& src)>;

// For operations that work on plane 0 alone: plane by plane through images of one plane.
std::function<void(KivImage&, const KivImage&)> planeByPlane(const PlaneOperation& op) {
  return [op](KivImage& dst, const KivImage& src) {
    dst.Init(src);
    for (int p = 0; p < src.channels; ++p) {
      KivImage from;
      from = src.Plane(p);
      KivImage to(src.size, 1);
      op(to, from);
      dst.Plane(p).Copy(to);
    }
  };
}

// For kernels of two planes with the step of both.
template <typename Kernel, typename... Scalars>
std::function<void(KivImage&, const KivImage&)> blendWithBlur(Kernel kernel, Scalars... scalars) {
  return planeByPlane([=](KivImage& dst, const KivImage& src) {
    KivImage blurred;
    blurred.GaussBlurFast(src, 3.0F, 4);
    kernel(dst.planes[0], const_cast<KivImage&>(src).planes[0], blurred.planes[0], src.size.height, src.size.width,
           src.stride / 4, scalars...);
  });
}

void dilateOrErode(KivImage& dst, const KivImage& src, bool dilate) {
  constexpr int side = 9;
  std::vector<unsigned char> mask(side * side, 1);
  if (dilate) {
    dst.Dilate(src, mask.data(), side, false);
  } else {
    dst.Erode(src, mask.data(), side, false);
  }
}

std::vector<Chapter> chapters() {
  using I = KivImage;
  const auto self = [](auto op) { return [op](I& d, const I& s) { op(d, s); }; };
  return {
      {"Blurs",
       {{"gauss_blur_fast", "GaussBlurFast(src, 4, 4), plane by plane",
         planeByPlane([](I& d, const I& s) { d.GaussBlurFast(s, 4.0F, 4); })},
        {"gauss_blur", "Gauss_Blur(src, 4, 4, true)", self([](I& d, const I& s) { d.Gauss_Blur(s, 4.0F, 4, true); })},
        {"gauss_blur_decimate", "GaussBlurDecimate(src, 12, 4), plane by plane",
         planeByPlane([](I& d, const I& s) { d.GaussBlurDecimate(s, 12.0F, 4); })},
        {"gaussian_box_blur", "Gaussian_Box_Blur(src, 4, 3)",
         self([](I& d, const I& s) { d.Gaussian_Box_Blur(s, 4.0F, 3); })},
        {"gaussian_iir_blur", "Gaussian_IIR_Blur(src, 4)", self([](I& d, const I& s) { d.Gaussian_IIR_Blur(s, 4.0); })},
        {"box_blur", "Box_Blur(src, 6)", self([](I& d, const I& s) { d.Box_Blur(s, 6); })},
        {"box_filter_constant", "ApplyBoxFilter(src, 20, KIV_BORDER_CONST, 1, false)",
         self([](I& d, const I& s) { d.ApplyBoxFilter(s, 20, I::KIV_BORDER_CONST, 1.0F, false); })},
        {"filter_with_pad", "Filter_With_Pad(src, Kernel(KERNEL_TYPE_GAUSS, 9, 3))",
         self([](I& d, const I& s) { d.Filter_With_Pad(s, Kernel(KERNEL_TYPE_GAUSS, 9, 3)); })},
        {"local_linear_filter", "ApplyLocalLinearFilter(src, 6, 0.01)",
         self([](I& d, const I& s) { d.ApplyLocalLinearFilter(s, 6, 0.01F); })}}},
      {"Extremes, local levels and contrast",
       {{"dilate", "Dilate with a full square of 9", self([](I& d, const I& s) { dilateOrErode(d, s, true); })},
        {"erode", "Erode with a full square of 9", self([](I& d, const I& s) { dilateOrErode(d, s, false); })},
        {"local_auto_levels", "LocalAutoLevels(src, 25, false), plane by plane",
         planeByPlane([](I& d, const I& s) { d.LocalAutoLevels(s, 25, false); })},
        {"local_auto_levels_detail", "LocalAutoLevels(src, 25, true), plane by plane",
         planeByPlane([](I& d, const I& s) { d.LocalAutoLevels(s, 25, true); })},
        {"local_auto_levels_old", "LocalAutoLevelsOld(src, 25, false)",
         self([](I& d, const I& s) { d.LocalAutoLevelsOld(s, 25, false); })},
        {"local_contrast", "ApplyLocalContrast(src, 20, 0.3, 60, 0.2), plane by plane",
         planeByPlane([](I& d, const I& s) { d.ApplyLocalContrast(s, 20.0F, 0.3F, 60.0F, 0.2F); })}}},
      {"High-pass and unsharp masking",
       {{"high_pass_filter", "HighPassFilter(src, 4, false), plane by plane",
         planeByPlane([](I& d, const I& s) { d.HighPassFilter(s, 4.0F, false); })},
        {"high_pass_ps", "HighPassPS(src, 4, 4), plane by plane",
         planeByPlane([](I& d, const I& s) { d.HighPassPS(s, 4.0F, 4); })},
        {"usm_ps", "UsmPS(src, 120, 2, 0.01)", self([](I& d, const I& s) { d.UsmPS(s, 120.0F, 2.0F, 0.01F); })},
        {"unsharp_mask", "ApplyUnsharpMaskKiv, amount 1.5", blendWithBlur(ApplyUnsharpMaskKiv, 1.5F)},
        {"unsharp_mask_photoshop", "ApplyUnsharpMaskPhotoshopKiv, amount 1.5, threshold 0.05",
         blendWithBlur(ApplyUnsharpMaskPhotoshopKiv, 1.5F, 0.05F)}}},
      {"Tone curves",
       {{"gamma", "ApplyGammaCurve(src, 0.6)", self([](I& d, const I& s) { d.ApplyGammaCurve(s, 0.6F); })},
        {"sigmoidal_curve", "SigmoidalCurve(src, 8, 0.5)",
         self([](I& d, const I& s) { d.SigmoidalCurve(s, 8.0F, 0.5F); })},
        {"sigmoidal_curve2", "SigmoidalCurve2(src, 4, 0, 1)",
         self([](I& d, const I& s) { d.SigmoidalCurve2(s, 4.0F, 0.0F, 1.0F); })},
        {"sigmoidal_contrast_up", "Sigmoidal_Contrast(src, 6)",
         self([](I& d, const I& s) { d.Sigmoidal_Contrast(s, 6.0F); })},
        {"sigmoidal_contrast_down", "Sigmoidal_Contrast(src, -6)",
         self([](I& d, const I& s) { d.Sigmoidal_Contrast(s, -6.0F); })},
        {"threshold", "Threshold(src, 0.3, 0, 0.7, 1)",
         self([](I& d, const I& s) { d.Threshold(s, 0.3F, 0.0F, 0.7F, 1.0F); })},
        {"stretch_range", "Stretch_Range(0.2, 0.7)", self([](I& d, const I& s) {
           d = s;
           d.Stretch_Range(0.2F, 0.7F);
         })},
        {"apply_lut", "Apply_Lut with six steps, plane by plane", planeByPlane([](I& d, const I& s) {
           float steps[] = {0.0F, 0.2F, 0.4F, 0.6F, 0.8F, 1.0F};
           d = s;
           d.Apply_Lut(steps, 5);
         })}}},
      {"Blends, each of the picture with its own blur",
       {{"blend_overlay", "BlendModeOverlayKiv", blendWithBlur(BlendModeOverlayKiv)},
        {"blend_linear_burn", "BlendModeLinearBurnKiv", blendWithBlur(BlendModeLinearBurnKiv)},
        {"blend_linear_dodge", "BlendModeLinearDodgeKiv", blendWithBlur(BlendModeLinearDodgeKiv)},
        {"details_merge_grain", "CalcDetailsLayerMergeGrain", blendWithBlur(CalcDetailsLayerMergeGrain)},
        {"details_linear_light", "CalcDetailsLayerLinearLight, offset 0",
         blendWithBlur(CalcDetailsLayerLinearLight, 0.0F)},
        {"tonal_mask", "ApplyTonalMaskKiv: blurred in the shadows, not in the highlights",
         blendWithBlur(ApplyTonalMaskKiv, 1.0F, 0.5F, 0.0F)},
        {"linear_light", "Blend_R: the details layer over the blur, amount 1", self([](I& d, const I& s) {
           I blurred;
           blurred.Gauss_Blur(s, 3.0F, 4, true);
           I details;
           details = s - blurred;
           details *= 0.5F;
           details += 0.5F;
           d = details.Blend_R(blurred, 1.0F);
         })}}},
  };
}

void run(const std::string& photo, const std::string& folder) {
  std::filesystem::create_directories(folder);
  const KivImage before = planesOf(loadPicture(photo));
  std::ofstream page(folder + ".md");
  const std::string leaf = std::filesystem::path(folder).filename().string();
  page << "# Gallery\n\nEvery operation of the toolkit on one photograph: before at the left, after at the right. Made "
          "by\n"
          "`build/release/tools/gallery examples/chelsea.png docs/gallery`.\n";
  for (const Chapter& chapter : chapters()) {
    page << "\n## " << chapter.title << "\n";
    for (const Operation& operation : chapter.operations) {
      KivImage after;
      operation.apply(after, before);
      save(before, after, folder + "/" + operation.name + ".jpg");
      page << "\n`" << operation.title << "`\n\n![" << operation.title << "](" << leaf << "/" << operation.name
           << ".jpg)\n";
    }
  }
  page.flush();
  if (!page) throw Failure(folder + ".md", "can't be written");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: gallery PHOTO FOLDER\n";
    return 2;
  }
  try {
    const ImageLibrary library(argv[0], false);
    run(argv[1], argv[2]);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << "gallery: " << error.what() << '\n';
  } catch (const NO_MEMORY_ERROR&) {
    std::cerr << "gallery: " << argv[1] << ": not enough memory for a picture of this size\n";
  }
  return EXIT_FAILURE;
}
