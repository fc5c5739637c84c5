// How far two pictures are apart, as a viewer would see it.
#pragma once

#include <string>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Pixels are compared after laying them over mid grey, so that the colour of invisible pixels doesn't count.
struct PictureDifference {
    double mean = 0.0;         // mean absolute difference per channel (alpha included), in 1/255
    double largest = 0.0;      // largest difference of one channel, in 1/255
    double share_above = 0.0;  // 0…1: pixels of which a channel differs by more than the threshold
    Picture image;             // RGB: eight times the difference, held to 255
};

struct PictureTolerance {
    double mean = 0.5;           // largest mean that still counts as the same
    double threshold = 12.0;     // 1/255: a difference that is seen
    double share_above = 0.005;  // largest share of pixels above it
};

/// Of two pictures of any formats; an error when their sizes differ.
STAGE_EXPORT Result<PictureDifference> compare_pictures(const Picture& expected, const Picture& actual,
                                                        double threshold = PictureTolerance{}.threshold);

STAGE_EXPORT bool within_tolerance(const PictureDifference& difference, const PictureTolerance& tolerance);

}  // namespace stage
