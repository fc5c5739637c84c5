// The format of parameters whose text is a curve.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// A curve has two or more points, each a position and `components` numbers, separated by single spaces. The positions
/// ascend. Positions and numbers lie in `range`.
struct CurveFormat {
    int32_t components = 1;
    std::array<float, 2> range = {0.0f, 1.0f};  // smallest and largest number
    bool steps = false;                         // two points may have the same position
    std::string outside;  // the effect at positions before the first and after the last point: "particles are black"
};

/// The points in order, components + 1 numbers each. The error says what breaks the format.
STAGE_EXPORT Result<std::vector<double>> curve_points(const CurveFormat& curve, std::string_view text);

/// The text of a curve: the shortest form of each number, separated by single spaces.
STAGE_EXPORT std::string curve_text(const std::vector<double>& numbers);

}  // namespace stage
