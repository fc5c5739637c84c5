// Compresses colours that are brighter than white, instead of clipping them.
#pragma once

#include <array>

#include "stage/stage_export.h"

namespace stage {

/// Compresses a colour whose greatest channel p is above `start`; others stay as they are. The greatest channel becomes
///     start + (1 - start) t / (1 + t), with t = (p - start) / (1 - start),
/// which leaves `start` with a slope of 1 and approaches 1. The colour keeps its hue, so that bright orange does not
/// turn yellow, and is mixed with white by the share 1 - 1 / (1 + 0.15 (p - the new p)): the tone mapper "PBR Neutral"
/// of the Khronos Group (2024), without its correction for reflections. color: red, green, blue, 0 or more. start: 0 to
/// below 1.
STAGE_EXPORT std::array<float, 3> soft_shoulder(const std::array<float, 3>& color, float start);

}  // namespace stage
