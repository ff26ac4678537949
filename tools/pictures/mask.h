// Masks: pictures that say how much of a result shows where.
//
// A mask is white where the result shows in full and black where the original stays; transparent counts as black, and a
// mask in colour is taken by the mean of red, green and blue. It lies over the picture as both are shown, whatever
// their orientation tags say. One of another size is scaled when it has the picture's proportions, to a pixel.
#pragma once

#include <string>
#include <vector>

#include "pictures/picture.h"

namespace orbel {

// Throws Failure when maskOver would, as far as the header of the mask's file tells. Gives the bytes that a mask keeps
// in memory.
double requireThatMaskFits(const std::string& mask, const Picture& picture);

// A mask that lies over the picture, of its size, made where it is asked for: grey in floats, 0 to 1, but for what
// masks of floats hold. Throws Failure about the mask when it can't be read, and when its proportions are others than
// the picture's.
Picture maskOver(const std::string& mask, const Picture& picture);

// How much of the result each pixel shows, 0 to 1, in rows of the picture. A mask of floats may hold anything: it is
// clipped, and what is no number counts as black. Throws as maskOver does.
std::vector<float> maskWeights(const std::string& mask, const Picture& picture);

}  // namespace orbel
