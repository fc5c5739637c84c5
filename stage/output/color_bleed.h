// Colour for transparent pixels.
#pragma once

#include "stage/assets/picture.h"
#include "stage/stage_export.h"

namespace stage {

/// Gives each pixel without alpha the colour of the nearest pixel with alpha (fewest steps to the left, right, up and
/// down), if that is at most 16 steps away. Programs that scale or filter a picture with straight alpha mix in the
/// colour of transparent pixels, and black ones would show as a dark fringe. Alpha and other pixels stay unchanged. A
/// second call changes nothing. Two passes over the picture, as Rosenfeld and Pfaltz (1966) compute
/// distances.
STAGE_EXPORT void bleed_colors(Picture& rgba);
STAGE_EXPORT void bleed_colors(DeepPicture& picture);

}  // namespace stage
