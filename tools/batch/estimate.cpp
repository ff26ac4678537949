#include "batch/estimate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <numeric>
#include <sstream>

#include "equalizer/bilateral_filter.h"
#include "files/failure.h"

namespace orbel {

namespace {

constexpr std::size_t bandCount = 5;
constexpr std::int64_t largestSide = 65535;
constexpr int longestHostSide = 32767;
constexpr std::int64_t largestBlock = 0x7FFFFFFF;

// What the plug-in has in memory at most, in bytes a pixel, its float image included: as measured with orbel apply on
// 26 megapixels, less the host's own. How the finest band is smoothed decides.
constexpr double moduleBytes = 14.5;
constexpr double moduleBytesWithWideGaussian = 17.4;
constexpr double moduleBytesWithWideGaussianOfLuminance = 21;
constexpr double moduleBytesWithEdges = 22.5;
constexpr float wideWindow = 32;
// A process that has loaded the libraries and the module, and read and written a small picture.
constexpr double processBytes = 62e6;

// One tap of the edge-preserving filter on one core: between AVX-512 (0.05 to 0.075) and SSE2 (0.18) on an AMD EPYC, as
// with AVX2. A Gaussian has too few taps to matter.
constexpr double nanosecondsPerTap = 0.1;

// All else that is done about a pixel, on the same machine: reading and writing it above all. Between JPEG (40) and PNG
// (150), as with JPEG 2000 and WebP.
constexpr double nanosecondsPerPixel = 100;
constexpr double nanosecondsPerPixelOfHevc = 1500;
// The process itself, without exiftool.
constexpr double secondsPerRun = 0.05;

// A band's low-pass as the plug-in sees it, in its single precision.
struct LowPass {
  float radius;
  float threshold;
  bool keepsEdges;

  float window() const { return std::ceil(4.0F * radius); }
  bool works() const {
    if (!(radius > 0.0F)) return false;
    return !keepsEdges ||
           (std::isfinite(bilateralCoefficient(radius)) && std::isfinite(bilateralCoefficient(threshold)));
  }
  double taps() const {
    const double side = 2.0 * static_cast<double>(window()) + 1.0;
    return !works() ? 0.0 : keepsEdges ? side * side : 2.0 * side;
  }
};

std::string keyOf(const char* family, std::size_t band) { return family + std::to_string(band + 1); }

LowPass lowPassOf(const Settings& settings, std::size_t band) {
  return {static_cast<float>(settings.value(keyOf("RAD", band))),
          static_cast<float>(settings.value(keyOf("THR", band))) * (1.0F / 255.0F),
          settings.value(keyOf("EDG", band)) != 0.0};
}

int halved(int length) { return length / 2 + length % 2; }

std::string radiusInBand(const Settings& settings, std::size_t band) {
  std::ostringstream text;
  text << "--radius " << settings.value(keyOf("RAD", band)) << " in band " << band + 1;
  return text.str();
}

double secondsOf(const std::array<double, bandCount>& taps, unsigned cores) {
  return 1e-9 * nanosecondsPerTap * std::accumulate(taps.begin(), taps.end(), 0.0) / std::max(cores, 1U);
}

double moduleBytesFor(const LowPass& finest, bool luminance) {
  if (!finest.works()) return moduleBytes;
  if (finest.keepsEdges) return moduleBytesWithEdges;
  if (!(finest.window() > wideWindow)) return moduleBytes;
  return luminance ? moduleBytesWithWideGaussianOfLuminance : moduleBytesWithWideGaussian;
}

}  // namespace

std::string timeText(double seconds) {
  constexpr double minute = 60;
  constexpr double hour = 60 * minute;
  constexpr double day = 24 * hour;
  constexpr double year = 365 * day;
  if (seconds < 1) return "less than a second";
  if (!(seconds < 1000 * year)) return "more than a thousand years";
  const auto rounded = [&](double unit, const char* name) {
    return "about " + std::to_string(std::lround(seconds / unit)) + name;
  };
  if (seconds < 1.5) return "about a second";
  if (seconds < 2 * minute) return rounded(1, " seconds");
  if (seconds < 2 * hour) return rounded(minute, " minutes");
  if (seconds < 2 * day) return rounded(hour, " hours");
  return seconds < 2 * year ? rounded(day, " days") : rounded(year, " years");
}

std::array<double, 5> tapsOf(const Settings& settings, int width, int height) {
  const double planes = settings.value("LUMI") != 0.0 ? 1.0 : 3.0;
  std::array<double, bandCount> taps{};
  for (std::size_t band = 0; band < bandCount; ++band) {
    taps[band] = lowPassOf(settings, band).taps() * width * height * planes;
    width = halved(width);
    height = halved(height);
  }
  return taps;
}

void requireThatWindowsFit(const std::string& file, const Settings& settings, int width, int height) {
  for (std::size_t band = 0; band < bandCount; ++band) {
    const LowPass lowPass = lowPassOf(settings, band);
    const std::int64_t room = std::max<std::int64_t>(0, (largestSide - std::max(width, height)) / 2);
    if (lowPass.keepsEdges && lowPass.works() && !(lowPass.window() <= static_cast<float>(room))) {
      std::ostringstream reason;
      reason << radiusInBand(settings, band) << " is too large for edge protection on this picture; at most "
             << static_cast<double>(room) / 4;
      throw Failure(file, reason.str(), Cause::Settings);
    }
    width = halved(width);
    height = halved(height);
  }
}

void requireShortWork(const std::string& file, const Settings& settings, int width, int height, unsigned cores,
                      double mostMinutes) {
  const std::array<double, bandCount> taps = tapsOf(settings, width, height);
  const double seconds = secondsOf(taps, cores);
  if (mostMinutes == 0 || !(seconds > 60 * mostMinutes)) return;
  const auto costliest = static_cast<std::size_t>(std::max_element(taps.begin(), taps.end()) - taps.begin());
  throw Failure(file,
                "these settings ask for " + timeText(seconds) + " of work, most of it for " +
                    radiusInBand(settings, costliest) + "; --max-minutes 0 does it all the same",
                Cause::TooLong);
}

void requireThatHostHolds(const std::string& file, int width, int height) {
  const std::string size = "is " + std::to_string(width) + " x " + std::to_string(height) + " pixels; ";
  if (std::max(width, height) > longestHostSide) {
    throw Failure(file, size + "the plug-in's host knows no side above " + std::to_string(longestHostSide),
                  Cause::TooLarge);
  }
  const std::int64_t rowBytes = (std::int64_t{width} * 4 + 63) / 64 * 64;
  if (const std::int64_t block = 3 * rowBytes * height; block > largestBlock) {
    throw Failure(file,
                  size + "as floats that is " + memoryText(static_cast<double>(block)) +
                      ", and the plug-in's block of memory ends at 2 GiB",
                  Cause::TooLarge);
  }
}

double secondsOf(const RunShape& shape, const Settings& settings, unsigned cores) {
  const double coding = 1e-9 * (shape.hevc ? nanosecondsPerPixelOfHevc : nanosecondsPerPixel);
  const double filtering = secondsOf(tapsOf(settings, shape.width, shape.height), cores);
  return secondsPerRun + filtering + coding * shape.width * shape.height;
}

double memoryOf(const RunShape& s, const Settings& settings) {
  const double pixels = static_cast<double>(s.width) * s.height;
  const double read = s.bands * s.readBytes;
  const double blending = s.blended ? s.colours * s.documentBytes + 4 : 0;  // the original and the weights
  const double module = moduleBytesFor(lowPassOf(settings, 0), settings.value("LUMI") != 0.0);
  const double running = read + (s.colours + 3) * s.documentBytes + blending + module;
  const double writing = read + s.bands * s.writtenBytes + s.colours * s.documentBytes + blending;
  return processBytes + pixels * std::max(running, writing);
}

void requireMemory(const std::string& file, double needed, double most) {
  if (most == 0 || needed <= most) return;
  throw Failure(
      file, "needs about " + memoryText(needed) + " of memory, and " + memoryText(most) + " are to be had (--memory)",
      Cause::NoMemory);
}

std::string memoryText(double bytes) {
  std::ostringstream text;
  const bool large = bytes >= 1e9;
  text << std::fixed << std::setprecision(large ? 1 : 0) << bytes / (large ? 1e9 : 1e6) << (large ? " GB" : " MB");
  return text.str();
}

}  // namespace orbel
