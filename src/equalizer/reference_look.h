// What the reference size changes, brought to the picture's size.
#pragma once

#include <memory>

#include "equalizer/look.h"

// The look g * Y + c of a picture with so many planes, c being there at the working size: by bilinear interpolation, or
// by area means where the picture is the smaller one. A change with twice the planes is a guided one, c = a * Y + b:
// the planes of b and then those of a, for larger pictures. Throws std::bad_alloc.
std::unique_ptr<Look> referenceLook(KivImage&& change, int planes, float gain, IppiSize picture);

// Of scratch for one thread, and of tables, for a change of so many planes.
double referenceLookBytes(IppiSize working, IppiSize picture, int planes, int threads);
