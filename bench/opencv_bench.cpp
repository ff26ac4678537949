// The equalizer's luminance run at its default settings, made of OpenCV's calls: the same stages on the same sizes, for
// comparison. OpenCV's bilateral filter visits a disc, about four fifths of the square's taps, and looks its weights
// up.

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "pictures.h"
#include "processors.h"

namespace {

constexpr int levels = 5;

cv::Mat equalized(const cv::Mat& plane) {
  std::array<cv::Mat, levels> bands;
  cv::Mat current = plane;
  cv::Mat lowpass;
  cv::Mat expanded;
  for (std::size_t i = 0; i < levels; ++i) {
    if (i == 0) {
      cv::GaussianBlur(current, lowpass, {25, 25}, 3, 3, cv::BORDER_REPLICATE);
    } else {
      cv::bilateralFilter(current, lowpass, 25, 10 / 255.0, 3, cv::BORDER_REPLICATE);
    }
    cv::Mat half;
    cv::resize(lowpass, half, {(current.cols + 1) / 2, (current.rows + 1) / 2}, 0, 0, cv::INTER_LINEAR);
    cv::resize(half, expanded, current.size(), 0, 0, cv::INTER_LINEAR);
    cv::subtract(current, expanded, bands[i]);
    bands[i] *= 1.0;
    current = half;
  }
  for (std::size_t i = levels; i-- > 0;) {
    cv::resize(current, expanded, bands[i].size(), 0, 0, cv::INTER_LINEAR);
    cv::add(expanded, bands[i], current);
    expanded = cv::Mat();
  }
  return current;
}

void run(std::vector<cv::Mat>& planes) {
  cv::Mat before;
  cv::addWeighted(planes[0], 0.299, planes[1], 0.587, 0, before);
  cv::scaleAdd(planes[2], 0.114, before, before);
  cv::Mat change = equalized(before);
  cv::subtract(change, before, change);
  for (cv::Mat& plane : planes) cv::add(plane, change, plane);
}

void wholeRunOfOpenCv(benchmark::State& state) {
  const auto count = static_cast<int>(state.range(0));
  const Processors processors(count);
  if (!processors.areThere()) return state.SkipWithError("this machine has fewer processors");
  cv::setNumThreads(count);
  KivImage image(sizeOf(24), 3);
  paint(image);
  std::vector<cv::Mat> planes;
  for (int i = 0; i < 3; ++i) {
    planes.emplace_back(image.size.height, image.size.width, CV_32F, image.planes[i],
                        static_cast<std::size_t>(image.stride));
  }
  const double before = mean(image);
  for (auto _ : state) run(planes);
  if (!(std::abs(mean(image) - before) < 0.0001)) state.SkipWithError("the picture didn't come back");
  countPixels(state, image.size);
}
BENCHMARK(wholeRunOfOpenCv)->ArgName("processors")->Arg(1)->Arg(2)->UseRealTime();

}  // namespace
