// Drawn frames with straight alpha.
#pragma once

#include <optional>

#include "stage/assets/picture.h"
#include "stage/stage_export.h"

namespace stage {

/// RGBA with 8 bits per channel, rounded to nearest; where alpha becomes 0 all four are 0. Where light was added until
/// colour × coverage is greater than the coverage, the colour is clamped to white or, with a shoulder, compressed from
/// there on (soft_shoulder.h).
STAGE_EXPORT Picture straight_bytes(const DrawnPicture& drawn, std::optional<float> shoulder = {});

/// The same with 16 bits per channel.
STAGE_EXPORT DeepPicture straight_deep(const DrawnPicture& drawn, std::optional<float> shoulder = {});

}  // namespace stage
