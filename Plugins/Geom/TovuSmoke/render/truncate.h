// Conversion to whole numbers, toward zero, defined for every float.
#pragma once

#include <cstdint>

namespace tovu {

/// trunc(value), held to the int32 range; 0 where `value` is not a number.
inline int32_t truncated(float value) {
    if (value >= 2147483648.0f) return INT32_MAX;
    if (value <= -2147483648.0f) return INT32_MIN;
    return value == value ? static_cast<int32_t>(value) : 0;
}

/// The low byte of trunc(value).
inline uint8_t low_byte(float value) {
    return static_cast<uint8_t>(truncated(value) & 0xFF);
}

}  // namespace tovu
