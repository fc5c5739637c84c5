// Converts drawn frames to straight alpha.
#pragma once

#include <optional>

#include "stage/assets/picture.h"
#include "stage/stage_export.h"

namespace stage {

/// RGBA with 8 bits per channel, rounded to nearest. All channels are 0 where alpha becomes 0. Additive blending can
/// make colour × coverage greater than the coverage; such colours are clamped to 1 or, with a shoulder, compressed
/// above it (soft_shoulder.h).
STAGE_EXPORT Picture straight_bytes(const DrawnPicture& drawn, std::optional<float> shoulder = {});

/// As straight_bytes, with 16 bits per channel.
STAGE_EXPORT DeepPicture straight_deep(const DrawnPicture& drawn, std::optional<float> shoulder = {});

}  // namespace stage
