// The FNV-1a digest.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace stage {

/// FNV-1a with 64 bits (Fowler, Noll, Vo). Numbers are added as little-endian bytes, so that a digest is the same on
/// every machine. All NaNs are added as the same bits, since processors differ in them.
struct Fnv1a {
    uint64_t value = 14695981039346656037u;

    void add_byte(unsigned byte) { value = (value ^ byte) * 1099511628211u; }
    template <std::unsigned_integral Number>
    void add(Number number) {
        for (size_t i = 0; i < sizeof number; ++i)
            add_byte(static_cast<unsigned>(static_cast<uint64_t>(number) >> 8 * i & 0xFF));
    }
    void add(float number) { add(number == number ? std::bit_cast<uint32_t>(number) : 0x7FC00000u); }
    void add(double number) { add(number == number ? std::bit_cast<uint64_t>(number) : 0x7FF8000000000000u); }
    /// Adds the characters and a NUL.
    void add(std::string_view text) {
        for (const char character : text) add_byte(static_cast<unsigned char>(character));
        add_byte(0);
    }
};

}  // namespace stage
