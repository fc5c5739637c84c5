// Random numbers from the C library's generator, which the process shares and the host seeds.
#pragma once

#include <cstdint>
#include <cstdlib>

namespace tovu {

/// The next value of `rand` as 15 bits, 0 to 32767. Of wider values the upper bits are used.
inline int32_t random_15_bits() {
    static_assert(RAND_MAX == 32767 || RAND_MAX == 2147483647);
    if constexpr (RAND_MAX == 32767) return std::rand();
    return std::rand() >> 16;
}

/// r · limit / 32767 for a 15-bit value r: 0 to `limit`, which only r = 32767 gives.
inline float random_share(int32_t r, float limit) {
    return static_cast<float>(static_cast<double>(r) * static_cast<double>(limit) / 32767.0);
}

/// A float between 0 and `limit`, which may be negative. Draws exactly one value.
inline float random_up_to(float limit) {
    return random_share(random_15_bits(), limit);
}

/// A value in [0, 1) in steps of 2^-30, for choices among more than 2^15 cases. Draws two values.
inline double random_fraction() {
    const int32_t high = random_15_bits();
    const int32_t low = random_15_bits();
    return (high * 32768.0 + low) / 1073741824.0;
}

}  // namespace tovu
