#include "soft_shoulder.h"

#include <algorithm>

namespace stage {

std::array<float, 3> soft_shoulder(const std::array<float, 3>& color, float start) {
    constexpr float kDesaturation = 0.15f;
    const float peak = std::max({color[0], color[1], color[2]});
    if (!(peak > start)) return color;
    const float room = 1.0f - start;
    const float compressed = 1.0f - room * room / (peak - start + room);
    const float whiteness = 1.0f - 1.0f / (kDesaturation * (peak - compressed) + 1.0f);
    std::array<float, 3> result{};
    for (size_t i = 0; i < 3; ++i) {
        const float hued = color[i] * (compressed / peak);
        result[i] = hued + whiteness * (compressed - hued);
    }
    return result;
}

}  // namespace stage
