#include "batch/estimate.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <sstream>

#include "batch/equalize.h"
#include "files/failure.h"
#include "files/machine.h"

namespace orbel {

namespace {

constexpr int longestHostSide = 32767;
constexpr std::int64_t largestBlock = 0x7FFFFFFF;

// A process that has loaded the libraries, and read and written a small picture.
constexpr double processBytes = 28e6;

// The lines that the image library has in hand between a file and a file: measured from JPEG, PNG and TIFF files of 24
// megapixels at 8 and 16 bits, on two threads.
constexpr double linesInHand = 1000;

// One tap of the edge-preserving filter on one core: between AVX-512 (0.05 to 0.075) and SSE2 (0.18) on an AMD EPYC, as
// with AVX2. A Gaussian has too few taps to matter.
constexpr double nanosecondsPerTap = 0.1;

// The process itself, without exiftool.
constexpr double secondsPerRun = 0.05;

double processorsOf(int threads) { return threads > 0 ? threads : processorCount(); }

double filteringSeconds(const orbel_plan& plan, int threads) {
  return 1e-9 * nanosecondsPerTap * plan.taps / processorsOf(threads);
}

std::string radiusInBand(const orbel_settings& run, std::int32_t band) {
  std::ostringstream text;
  text << "--radius " << run.bands[band].radius << " in band " << band + 1;
  return text.str();
}

double pixelsOf(const RunShape& shape) { return static_cast<double>(shape.width) * shape.height; }

}  // namespace

orbel_plan planFor(const std::string& file, const orbel_settings& run, const orbel_picture& shape, int threads) {
  EngineOptions options(file, threads);
  orbel_plan plan;
  orbel_plan_init(&plan, sizeof plan);
  const orbel_status status = orbel_plan_run(&run, &shape, options.get(), &plan);
  if (status == ORBEL_TOO_LARGE) {
    std::ostringstream reason;
    reason << radiusInBand(run, plan.refused_band) << " is too large for edge protection on this picture; at most "
           << plan.largest_radius;
    throw Failure(file, reason.str(), Cause::Settings);
  }
  options.require(status);
  return plan;
}

void requireShortWork(const std::string& file, const orbel_settings& run, const orbel_plan& plan, int threads,
                      double mostMinutes) {
  const double seconds = filteringSeconds(plan, threads);
  if (mostMinutes == 0 || !(seconds > 60 * mostMinutes)) return;
  const auto* const costliest =
      std::max_element(std::begin(plan.levels), std::end(plan.levels),
                       [](const orbel_level& a, const orbel_level& b) { return a.taps < b.taps; });
  const auto band = static_cast<std::int32_t>(costliest - std::begin(plan.levels));
  throw Failure(file,
                "these settings ask for " + timeText(seconds) + " of work, most of it for " + radiusInBand(run, band) +
                    "; --max-minutes 0 does it all the same",
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

RunShape shapeOf(const Picture& picture) {
  RunShape shape;
  shape.width = picture.width();
  shape.height = picture.height();
  shape.channels = picture.channels();
  shape.colours = picture.colours();
  shape.readBytes = shape.writtenBytes = bytesOf(picture.samples());
  return shape;
}

double secondsOf(const orbel_plan& plan, const RunShape& shape, int threads) {
  return secondsPerRun + filteringSeconds(plan, threads) + 1e-9 * shape.nanosecondsPerPixel * pixelsOf(shape);
}

double memoryOf(const orbel_plan& plan, const RunShape& s) {
  const double pixels = pixelsOf(s);
  const double lines = linesInHand * s.width * s.channels * std::max(s.readBytes, s.writtenBytes);
  const double library = s.heldBytes * pixels + lines;
  if (s.inLines) {
    const double kept = s.kept ? pixels * s.channels * s.readBytes : 0;
    const double mask = s.maskBytes > 0 ? s.maskBytes + linesInHand * s.width * s.channels : 0;
    return processBytes + plan.bytes + kept + s.cutBytes + mask + library;
  }
  double bytes = s.channels * s.readBytes;  // a pixel
  if (s.readBytes != s.writtenBytes) bytes += s.channels * s.writtenBytes;
  if (s.blended) bytes += static_cast<double>(sizeof(float));
  if (s.documentBytes > 0) {
    // The document, the module's result, the module's own three planes of floats, and the original to blend with.
    bytes += (s.colours + 3 + (s.blended ? s.colours : 0)) * s.documentBytes + 3 * static_cast<double>(sizeof(float));
  }
  return processBytes + pixels * bytes + std::max(plan.bytes, s.cutBytes + library);
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

}  // namespace orbel
