#include "color_bleed.h"

#include <algorithm>

namespace stage {
namespace {

constexpr uint8_t kReach = 16;        // steps
constexpr uint8_t kFar = kReach + 1;  // any larger distance

/// A pixel and its distance to the nearest pixel with alpha that was found so far.
template <class Channel>
struct Pixel {
    uint8_t* distance;
    Channel* rgba;

    void take_if_nearer(ptrdiff_t offset) const {
        const int through = distance[offset] + 1;
        if (through >= *distance) return;
        *distance = static_cast<uint8_t>(through);
        std::copy_n(rgba + offset * 4, 3, rgba);
    }
};

template <class Channel>
void bleed(int32_t width, int32_t height, std::vector<Channel>& channels) {
    std::vector<uint8_t> distances(channels.size() / 4);
    for (size_t i = 0; i < distances.size(); ++i) distances[i] = channels[i * 4 + 3] == 0 ? kFar : uint8_t{0};
    const auto pixel = [&](ptrdiff_t i) { return Pixel<Channel>{distances.data() + i, channels.data() + i * 4}; };
    ptrdiff_t i = 0;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x, ++i) {
            if (distances[static_cast<size_t>(i)] == 0) continue;
            if (x > 0) pixel(i).take_if_nearer(-1);
            if (y > 0) pixel(i).take_if_nearer(-width);
        }
    for (int32_t y = height; y-- > 0;)
        for (int32_t x = width; x-- > 0;) {
            if (distances[static_cast<size_t>(--i)] == 0) continue;
            if (x < width - 1) pixel(i).take_if_nearer(1);
            if (y < height - 1) pixel(i).take_if_nearer(width);
        }
}

}  // namespace

void bleed_colors(Picture& rgba) {
    bleed(rgba.width, rgba.height, rgba.bytes);
}

void bleed_colors(DeepPicture& picture) {
    bleed(picture.width, picture.height, picture.channels);
}

}  // namespace stage
