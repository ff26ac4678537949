// The size that a picture is worked on at, where the radii are meant for a reference size: its look is then the same at
// every size, and its work that of the reference size.
#pragma once

#include "primitives/primitives.h"

struct WorkingSize {
  IppiSize size;
  double radii;  // by which they are multiplied: 1, unless the picture is too flat to be reduced so far
};

// The picture with its longer side at the reference edge, or as it is for an edge of 0. A picture isn't reduced below a
// short side of 64 samples, where the coarser levels would have nothing left to halve; what is missing then, the radii
// make up for.
WorkingSize workingSize(IppiSize picture, int referenceEdge);
