// Conversion of float to integer, toward zero, defined for every value.
#pragma once

#include <cmath>
#include <cstdint>

namespace tovu {

/// trunc(value), clamped to the int32 range. NaN gives 0.
inline int32_t truncated(float value) {
    if (value >= 2147483648.0f) return INT32_MAX;
    if (value <= -2147483648.0f) return INT32_MIN;
    return std::isnan(value) ? 0 : static_cast<int32_t>(value);
}

/// The low byte of trunc(value).
inline uint8_t low_byte(float value) {
    return static_cast<uint8_t>(truncated(value) & 0xFF);
}

}  // namespace tovu
