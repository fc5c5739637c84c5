#include "straight_picture.h"

#include <Imath/half.h>

#include <algorithm>
#include <array>
#include <limits>

#include "soft_shoulder.h"

namespace stage {
namespace {

/// Added before the truncation, it rounds to nearest without a library call per channel.
constexpr float kHalfStep = 0.5f;

/// Scales 0…1 to the range of the type, clamped and rounded to nearest. NaN becomes 0.
template <class Channel>
Channel to_channel(float value) {
    if (!(value > 0.0f)) return 0;
    return static_cast<Channel>(std::min(value, 1.0f) * float{std::numeric_limits<Channel>::max()} + kHalfStep);
}

template <class Channel>
std::vector<Channel> straight(const DrawnPicture& drawn, std::optional<float> shoulder) {
    std::vector<Channel> channels(drawn.halves.size());
    for (size_t i = 0; i < channels.size(); i += 4) {
        const float alpha = imath_half_to_float(drawn.halves[i + 3]);
        channels[i + 3] = to_channel<Channel>(alpha);
        if (channels[i + 3] == 0) continue;
        std::array<float, 3> color{};
        for (size_t channel = 0; channel < 3; ++channel)
            color[channel] = imath_half_to_float(drawn.halves[i + channel]) / alpha;
        if (shoulder) color = soft_shoulder(color, *shoulder);
        for (size_t channel = 0; channel < 3; ++channel) channels[i + channel] = to_channel<Channel>(color[channel]);
    }
    return channels;
}

}  // namespace

Picture straight_bytes(const DrawnPicture& drawn, std::optional<float> shoulder) {
    return {drawn.width, drawn.height, kPictureRgba, straight<uint8_t>(drawn, shoulder)};
}

DeepPicture straight_deep(const DrawnPicture& drawn, std::optional<float> shoulder) {
    return {drawn.width, drawn.height, straight<uint16_t>(drawn, shoulder)};
}

}  // namespace stage
