// Trigonometry whose results are the same bits with every C library. Libraries differ in the last place of their float
// functions, and of their double functions too; but the last place of a double is 2^-29 of a float's, so that a double
// result rounded once to float does not show the difference.
#pragma once

#include <cmath>

namespace tovu {

/// Of an angle in radians.
inline float sine_of(float radians) {
    return static_cast<float>(std::sin(static_cast<double>(radians)));
}
inline float cosine_of(float radians) {
    return static_cast<float>(std::cos(static_cast<double>(radians)));
}

/// Radians, -pi/2 to pi/2 and 0 to pi; not a number where `value` is outside -1 to 1.
inline float arc_sine(float value) {
    return static_cast<float>(std::asin(static_cast<double>(value)));
}
inline float arc_cosine(float value) {
    return static_cast<float>(std::acos(static_cast<double>(value)));
}

/// The angle of the point (x, y) from the x axis, -180 to 180 degrees.
inline float arc_tangent_degrees(float y, float x) {
    constexpr double kDegreesPerRadian = 57.29577951308232;
    return static_cast<float>(std::atan2(static_cast<double>(y), static_cast<double>(x)) * kDegreesPerRadian);
}

}  // namespace tovu
