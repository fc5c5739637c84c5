// Compares two pictures as a viewer sees them.
#pragma once

#include <string>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Pixels are compared over mid grey, so that the colour of transparent pixels has no effect.
struct PictureDifference {
    double mean = 0.0;         // mean absolute difference per channel (alpha included), in 1/255
    double largest = 0.0;      // largest difference of one channel, in 1/255
    double share_above = 0.0;  // 0…1: share of the pixels with a channel that differs by more than the threshold
    Picture image;             // RGB: eight times the difference, clamped to 255
};

struct PictureTolerance {
    double mean = 0.5;           // largest accepted mean
    double threshold = 12.0;     // 1/255: smallest visible difference
    double share_above = 0.005;  // largest accepted share of pixels above the threshold
};

/// Formats may differ. Error: the sizes differ.
STAGE_EXPORT Result<PictureDifference> compare_pictures(const Picture& expected, const Picture& actual,
                                                        double threshold = PictureTolerance{}.threshold);

STAGE_EXPORT bool within_tolerance(const PictureDifference& difference, const PictureTolerance& tolerance);

}  // namespace stage
