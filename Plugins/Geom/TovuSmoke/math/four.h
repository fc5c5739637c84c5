// Four numbers that are worked on as one, in the registers that every processor of today has. Compilers make the same
// of short loops where they see through them; here they need not.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tovu {

typedef float Four __attribute__((vector_size(16)));
typedef int32_t FourWhole __attribute__((vector_size(16)));  // as the result of a comparison -1 where it holds

inline Four four_at(const void* bytes) {
    Four four;
    std::memcpy(&four, bytes, sizeof four);
    return four;
}
template <class AnyFour>
void put_four(void* bytes, AnyFour four) {
    std::memcpy(bytes, &four, sizeof four);
}

inline Four all_four(float value) {
    return Four{value, value, value, value};
}

/// One of the four, four times.
template <int index>
Four spread(Four four) {
    const FourWhole bits = reinterpret_cast<FourWhole>(four);  // as whole numbers it is one instruction, which copies
    return reinterpret_cast<Four>(__builtin_shufflevector(bits, bits, index, index, index, index));
}

/// The second of each two, followed by -0, which changes nothing that it is added to.
inline Four seconds_of_two(Four four) {
    typedef uint64_t Two __attribute__((vector_size(16)));
    static_assert(std::endian::native == std::endian::little);
    constexpr uint64_t kMinusZero = 0x8000000000000000u;
    return reinterpret_cast<Four>(reinterpret_cast<Two>(four) >> 32 | kMinusZero);
}

/// The bits of `four` where `mask` has its own.
inline Four masked(Four four, FourWhole mask) {
    return reinterpret_cast<Four>(reinterpret_cast<FourWhole>(four) & mask);
}

}  // namespace tovu
