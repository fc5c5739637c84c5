// Sine and cosine of an angle in degrees without branches, so that the compiler vectorises loops over arrays of angles.
#pragma once

#include <cstdint>

#include "bits.h"
#include "trigonometry.h"

namespace tovu {

/// Within 1.8 units in the last place for |degrees| up to 2^22, where the reduction to a quadrant is exact. Beyond that they
/// are meaningless; infinity and NaN give NaN. Multiples of 90 give exactly 0, 1 or -1.
/// The angle is reduced to -45…45 in degrees, in which a quarter turn is an integer and the reduction loses nothing.
/// The polynomials interpolate sine and cosine at the Chebyshev nodes of that range.
inline SineCosine fast_sine_cosine_degrees(float degrees) {
    // Adding 1.5 · 2^23 rounds to an integer, whose last bits are then the last bits of the float. They are read as
    // bits, since converting NaN to an integer is undefined.
    constexpr float kRounder = 12582912.0f;
    const uint32_t quarters = bit_cast<uint32_t>(degrees * (1.0f / 90.0f) + kRounder);
    const float r = degrees - (bit_cast<float>(quarters) - kRounder) * 90.0f;
    const float u = r * r;
    const float s =
        r * 1.745329238e-02f + r * (u * (-8.860960490e-07f + u * (1.349506787e-11f + u * -9.663329042e-17f)));
    const float c =
        1.0f + u * (-1.523087098e-04f + u * (3.866322363e-09f + u * (-3.925464278e-14f + u * 2.106395906e-19f)));

    // Odd quarters exchange the two; the sine is negative in quarters 2 and 3, the cosine in 1 and 2.
    const uint32_t s_bits = bit_cast<uint32_t>(s);
    const uint32_t c_bits = bit_cast<uint32_t>(c);
    const uint32_t exchange = (s_bits ^ c_bits) & (0u - (quarters & 1u));
    const uint32_t sine_sign = (quarters & 2u) << 30;
    const uint32_t cosine_sign = ((quarters + 1u) & 2u) << 30;
    return {bit_cast<float>(s_bits ^ exchange ^ sine_sign), bit_cast<float>(c_bits ^ exchange ^ cosine_sign)};
}

}  // namespace tovu
