// Colour and opacity over a particle's life: building the tables from the curve texts, and looking them up.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "../instance/smoke_instance.h"
#include "../math/float4.h"

namespace tovu {

/// Entries of the ColorTable for four particles: trunc(age × 1024 / life), clamped to 0…1024. NaN (age and life both 0)
/// gives 1024.
inline Int4 color_indices(Float4 age, Float4 life) {
    const Float4 phases = age * broadcast(1024.0f) / life;
    const Float4 below = phases < broadcast(1024.0f) ? phases : broadcast(1024.0f);  // NaN compares false
    const Float4 clamped = below > broadcast(0.0f) ? below : broadcast(0.0f);
    return __builtin_convertvector(clamped, Int4);
}

/// The entry of the ColorTable of one particle.
inline uint32_t color_index(float age, float life) {
    return static_cast<uint32_t>(color_indices(broadcast(age), broadcast(life))[0]);
}

/// The entry of the AlphaTable, 0…512, from the entry of the ColorTable: trunc(512 × f) equals trunc(1024 × f) / 2.
inline uint32_t alpha_index(uint32_t color_index) {
    return color_index / 2;
}

/// Red, green and blue of an entry of the ColorTable in the low three bytes. The top byte is the byte that follows in
/// the block: one unaligned load is faster than three.
inline uint32_t color_entry(const SmokeInstance& instance, uint32_t index) {
    static_assert(std::endian::native == std::endian::little);
    static_assert(offsetof(SmokeInstance, color_table) + sizeof(ColorTable) < sizeof(SmokeInstance));
    uint32_t rgb;
    const char* const table = reinterpret_cast<const char*>(&instance) + offsetof(SmokeInstance, color_table);
    std::memcpy(&rgb, table + 3 * index, sizeof rgb);
    return rgb;
}

/// Rebuilds `color_table` from the parameter `color`: groups of position, red, green, blue, all clamped to 0…1. Two
/// neighbouring stops fill the entries from the first up to but not including the second. All other entries are black.
void build_color_table(SmokeInstance& instance);

/// Rebuilds `alpha_table` from the parameter `alpha_curve`: pairs of x and alpha, joined by Akima's spline and clamped
/// to 0…1. With fewer than two points, or x that does not strictly increase, all entries are 0. Points after 1000 are
/// ignored.
void build_alpha_table(SmokeInstance& instance);

/// Writes the sampled alpha curve as 104 pairs in the format of `alpha_curve` into the host's buffer of `return_value`.
void build_alpha_text(SmokeInstance& instance);

}  // namespace tovu
