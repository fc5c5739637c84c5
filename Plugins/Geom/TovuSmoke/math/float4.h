// Four-lane SIMD through compiler vector extensions: one SSE2 or NEON register each. Written out where compilers do not
// vectorise the plain loop.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tovu {

typedef float Float4 __attribute__((vector_size(16)));
typedef int32_t Int4 __attribute__((vector_size(16)));  // comparisons give -1 (true) or 0 (false) in each lane

/// The additive identity of float: adding it changes no value, not even 0 or -0.
constexpr float kNegativeZero = -0.0f;

/// Reads 16 bytes of any alignment.
inline Float4 load_float4(const void* bytes) {
    Float4 vector;
    std::memcpy(&vector, bytes, sizeof vector);
    return vector;
}

/// Writes 16 bytes of any alignment. Vector4: Float4 or Int4.
template <class Vector4>
void store(void* bytes, Vector4 vector) {
    static_assert(sizeof vector == 16);
    std::memcpy(bytes, &vector, sizeof vector);
}

/// `value` in every lane.
inline Float4 broadcast(float value) {
    return Float4{value, value, value, value};
}

/// Lane `index` in every lane.
template <int index>
Float4 broadcast_lane(Float4 vector) {
    const Int4 bits = reinterpret_cast<Int4>(vector);  // a shuffle of integers copies and shuffles in one instruction
    return reinterpret_cast<Float4>(__builtin_shufflevector(bits, bits, index, index, index, index));
}

/// {v[1], -0, v[3], -0}.
inline Float4 odd_lanes_to_even(Float4 v) {
    typedef uint64_t Pair __attribute__((vector_size(16)));
    static_assert(std::endian::native == std::endian::little);
    constexpr uint64_t kNegativeZeroInOdd = 0x8000000000000000u;
    return reinterpret_cast<Float4>(reinterpret_cast<Pair>(v) >> 32 | kNegativeZeroInOdd);
}

/// Bitwise `vector & mask`: with the result of a comparison, the lanes where it is true and 0 in the others.
inline Float4 masked(Float4 vector, Int4 mask) {
    return reinterpret_cast<Float4>(reinterpret_cast<Int4>(vector) & mask);
}

}  // namespace tovu
