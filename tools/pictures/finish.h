// What is done around the plug-in, which knows nothing of it: radii that scale with the picture before the run, and the
// blend of its result with the original after it.
#pragma once

#include <vector>
#include <vips/vips8>

#include "plugin/plugin_host.h"
#include "settings/settings_choice.h"

namespace orbel {

// The plug-in's settings for a picture of this size: with a reference edge, the radii times the picture's longer side
// over it.
Settings settingsFor(const SettingsChoice& choice, int width, int height);

// True when the result is blended with the original: picture and result have to be documents of floats then, or the
// blend would be one of rounded samples.
bool isBlended(const SettingsChoice& choice);

// Throws Failure when weightsOf would, for its mask, as far as the header of the mask's file tells.
void requireThatMaskFits(const SettingsChoice& choice, const vips::VImage& picture);

// How much of the result each pixel shows, 0 to 1, in rows: the mix times the mask, where there is one.
//
// A mask is white where the result shows in full and black where the original stays; transparent counts as black, and a
// mask in colour is taken by the mean of red, green and blue. It lies over the picture as both are shown, whatever
// their orientation tags say. One of another size is scaled when it has the picture's proportions, to a pixel. Throws
// Failure when it can't be read, and when its proportions are others.
std::vector<float> weightsOf(const SettingsChoice& choice, const vips::VImage& picture);

// result = original * (1 - weight) + result * weight, for documents of floats and one weight a pixel. Nothing clips; at
// weights of 0 and 1 the samples are exactly the one's or the other's. Without weights the result stays as it is.
void blend(const Document& original, const std::vector<float>& weights, Document& result);

}  // namespace orbel
