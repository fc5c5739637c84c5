// What a parameter's text must be to be a curve.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The text is a curve: two points or more, each a position and `components` numbers, separated by single spaces. The
/// positions ascend. Positions and numbers lie in `range`.
struct CurveFormat {
    int32_t components = 1;
    std::array<float, 2> range = {0.0f, 1.0f};  // smallest and largest number
    bool steps = false;                         // two points may have one position
    std::string outside;  // what happens at positions before the first point and after the last: "particles are black"
};

/// The points in order: components + 1 numbers each, two points or more. The error says what breaks the format.
STAGE_EXPORT Result<std::vector<double>> curve_points(const CurveFormat& curve, std::string_view text);

/// The numbers of a curve as its text: the fewest digits that give the same number, between single spaces.
STAGE_EXPORT std::string curve_text(const std::vector<double>& numbers);

}  // namespace stage
