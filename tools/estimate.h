// Foresees what a run asks for, so that a slip in the settings costs neither hours nor a riddle.
#pragma once

#include <array>
#include <string>

#include "settings.h"

// The samples that each band's low-pass visits, finest band first: its taps by the pixels of its level (each half the
// size of the one before, rounded up) by the planes that are worked on, 1 for luminance and else 3. With
// w = 2 * ceil(4 * radius) + 1, the edge-preserving filter has w * w taps and a Gaussian 2 * w. 0 for a band whose
// radius or threshold means no low-pass at all.
std::array<double, 5> tapsOf(const Settings& settings, int width, int height);

// Throws Failure about the file when the plug-in would refuse the window of an edge-preserving filter: when a level and
// the window on either side of it exceed 65535 samples in a direction.
void requireThatWindowsFit(const std::string& file, const Settings& settings, int width, int height);

// Throws Failure about the file, with the estimate, when the low-passes would take more than ten minutes on so many
// cores.
void requireShortWork(const std::string& file, const Settings& settings, int width, int height, unsigned cores);
