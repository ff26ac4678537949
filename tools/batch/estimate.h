// Foresees what a run asks for, so that a slip in the settings costs neither hours nor a riddle.
#pragma once

#include <array>
#include <string>

#include "settings/settings.h"

namespace orbel {

// The samples that each band's low-pass visits, finest band first: its taps by the pixels of its level (each half the
// size of the one before, rounded up) by the planes that are worked on, 1 for luminance and else 3. With
// w = 2 * ceil(4 * radius) + 1, the edge-preserving filter has w * w taps and a Gaussian 2 * w. 0 for a band whose
// radius or threshold means no low-pass at all.
std::array<double, 5> tapsOf(const Settings& settings, int width, int height);

// Throws Failure about the file when the plug-in would refuse the window of an edge-preserving filter: when a level and
// the window on either side of it exceed 65535 samples in a direction.
void requireThatWindowsFit(const std::string& file, const Settings& settings, int width, int height);

// Throws Failure about the file, with the estimate, when the low-passes would take more than so many minutes on so many
// cores. 0 minutes: no limit.
void requireShortWork(const std::string& file, const Settings& settings, int width, int height, unsigned cores,
                      double mostMinutes);

// Throws Failure about the file when a side exceeds the host's 32767 pixels, or the plug-in's float image its 2 GiB.
void requireThatHostHolds(const std::string& file, int width, int height);

// What a run is made of, beside the picture's size.
struct RunShape {
  int width = 0;
  int height = 0;
  int bands = 0;         // of the file, with alpha
  int colours = 0;       // of the document: 1 or 3
  int readBytes = 0;     // a sample of the file that is read
  int writtenBytes = 0;  // and of the one that is written
  int documentBytes = 0;
  bool blended = false;  // with the original, by a weight a pixel
  bool hevc = false;     // is what the written file is encoded with, which takes longest by far
};

// Seconds that a run takes, with its process, reading and writing: the low-passes shared by the cores, the rest on one.
double secondsOf(const RunShape& shape, const Settings& settings, unsigned cores);

// Bytes that a process of one run has in memory at most.
double memoryOf(const RunShape& shape, const Settings& settings);

// Throws Failure about the file when needed exceeds most; 0 for most: nobody knows.
void requireMemory(const std::string& file, double needed, double most);

// "1.2 GB", "380 MB"
std::string memoryText(double bytes);

// "less than a second", "about 40 seconds", "about 3 hours"
std::string timeText(double seconds);

}  // namespace orbel
