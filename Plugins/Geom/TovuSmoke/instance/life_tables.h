// The tables of colour and opacity over a particle's life, as they lie in the instance's block.
#pragma once

#include <cstdint>

namespace tovu {

constexpr int32_t kColorEntries = 1025;
constexpr int32_t kAlphaEntries = 513;

/// Entry k: red, green, blue, 0 to 255, at life fraction k / 1024.
struct ColorTable {
    uint8_t rgb[kColorEntries][3];
};

/// Entries 0 to 511: opacity 0 to 1, sampled at i / 511. Entry 512 is always 0. Read at trunc(512 × life fraction).
struct AlphaTable {
    float alpha[kAlphaEntries];
};

}  // namespace tovu
