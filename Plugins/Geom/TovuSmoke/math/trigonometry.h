// Trigonometry that gives the same bits with every C library. Libraries differ in the last place of their float and of
// their double functions. The last place of a double is 2^-29 of a float's, so rounding a double result once to float
// removes the difference.
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

/// Sine and cosine of one angle.
struct SineCosine {
    float sine;
    float cosine;
};

/// Of an angle in degrees. The radians, the sine and the cosine are each rounded to float32.
inline SineCosine sine_cosine_degrees(float degrees) {
    const auto radians = static_cast<float>(static_cast<double>(degrees) * 0.017453292519943295);
    return {sine_of(radians), cosine_of(radians)};
}

/// Radians, -pi/2 to pi/2 and 0 to pi; NaN where `value` is outside -1 to 1.
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
