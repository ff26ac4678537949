// Foresees what a run asks for, so that a slip in the settings costs neither hours nor a riddle: the engine's plan, and
// what the program itself does around it.
#pragma once

#include <string>

#include "api/orbel.h"
#include "pictures/picture.h"

namespace orbel {

// The engine's plan for a picture of such a shape. Throws Failure about the file for what the engine would refuse: a
// window of an edge-preserving filter that has no room, or a setting out of its range.
orbel_plan planFor(const std::string& file, const orbel_settings& run, const orbel_picture& shape, int threads);

// Throws Failure about the file, with the estimate, when the low-passes would take more than so many minutes. threads:
// 0 for all processors. 0 minutes: no limit.
void requireShortWork(const std::string& file, const orbel_settings& run, const orbel_plan& plan, int threads,
                      double mostMinutes);

// Throws Failure about the file when a side exceeds a host's 32767 pixels, or a module's float image its 2 GiB.
void requireThatHostHolds(const std::string& file, int width, int height);

// What a run is made of, beside the plan.
struct RunShape {
  int width = 0;  // of the picture
  int height = 0;
  int channels = 0;                  // of the file, with alpha
  int colours = 0;                   // 1 or 3
  int readBytes = 0;                 // a sample of the file that is read
  int writtenBytes = 0;              // and of the one that is written
  int documentBytes = 0;             // a sample of a module's document; 0 for the engine, which needs none
  bool blended = false;              // with the original, by a weight a pixel
  bool inLines = false;              // and then:
  bool kept = false;                 // the decoded picture is
  double cutBytes = 0;               // of a part that is cut out in memory
  double maskBytes = 0;              // that are kept of a mask
  double heldBytes = 0;              // a pixel, by the image library while it reads and writes
  double nanosecondsPerPixel = 100;  // of reading and writing
};

// Of a picture that comes back as it is, from memory to memory.
RunShape shapeOf(const Picture& picture);

// Seconds that a run takes, with its process, reading and writing: the low-passes shared by the threads, the rest on
// one.
double secondsOf(const orbel_plan& plan, const RunShape& shape, int threads);

// Bytes that a process of one run has in memory at most.
double memoryOf(const orbel_plan& plan, const RunShape& shape);

// Throws Failure about the file when needed exceeds most; 0 for most: nobody knows.
void requireMemory(const std::string& file, double needed, double most);

// "1.2 GB", "380 MB"
std::string memoryText(double bytes);

// "less than a second", "about 40 seconds", "about 3 hours"
std::string timeText(double seconds);

}  // namespace orbel
