// Converts parameter values to another frame rate.
#pragma once

#include <span>
#include <string_view>

#include "stage/stage_export.h"

namespace stage {

/// A number that acts in each frame. kind: "drag", "speed", "gravity" or "turbulence", as in a plug-in's notes.
struct RateValue {
    std::string_view kind;
    double value = 0.0;
    double minimum = 0.0;  // of the converted value
    double maximum = 0.0;
};

/// Converts the values of one instance, so that the smoke has the same motion in time. ratio: new rate / old rate,
/// above 0. At most one value is a drag. Results are clamped to their range; the drag is clamped first, so that the
/// other values match the clamped drag.
///
/// A particle's step, with period T: position += velocity; position += noise; velocity.y -= gravity T; velocity *= d,
/// where d = 1 - drag / 1000. With the initial velocity v = speed T and the terminal velocity u = -gravity T d / (1 -
/// d), both per frame, the linear recurrence has the solution position(n) = (v - u)(1 - d^n) / (1 - d) + n u. It is the
/// same after n frames and after n' = ratio n if
///     d' = d^(1 / ratio)
///     speed' = speed ratio (1 - d') / (1 - d)           the distance under drag is the same
///     gravity' = gravity (d / d') (1 - d') / (1 - d)    the terminal velocity per second is the same
/// but for the share of u in the first term: a difference of |u| |1 / (ratio (1 - d')) - 1 / (1 - d)| units at most,
/// less than the distance of one frame. Without drag, the limit for d = 1: speed' = speed, gravity' = gravity / ratio.
/// The noise of a frame is uniform with a width of turbulence T, the variances of independent frames add up:
/// turbulence' = turbulence √ratio.
STAGE_EXPORT void convert_rate(std::span<RateValue> values, double ratio);

}  // namespace stage
