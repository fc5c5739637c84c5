#include "picture_compare.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace stage {
namespace {

constexpr double kMidGrey = 127.5;
constexpr double kAmplification = 8.0;
constexpr size_t kChannels = 4;

/// Red, green and blue over mid grey, and alpha; each 0…255.
std::array<double, kChannels> seen_pixel(const Picture& picture, size_t index) {
    const uint8_t* p = &picture.bytes[index * static_cast<size_t>(bytes_per_pixel(picture.format))];
    std::array<double, kChannels> rgba{};
    switch (picture.format) {
        case kPictureAlpha:
            rgba = {255.0, 255.0, 255.0, double(p[0])};
            break;
        case kPictureLuminance:
            rgba = {double(p[0]), double(p[0]), double(p[0]), 255.0};
            break;
        case kPictureLuminanceAlpha:
            rgba = {double(p[0]), double(p[0]), double(p[0]), double(p[1])};
            break;
        case kPictureRgb:
            rgba = {double(p[0]), double(p[1]), double(p[2]), 255.0};
            break;
        case kPictureRgba:
            rgba = {double(p[0]), double(p[1]), double(p[2]), double(p[3])};
            break;
    }
    const double cover = rgba[3] / 255.0;
    for (size_t channel = 0; channel < 3; ++channel) rgba[channel] = rgba[channel] * cover + kMidGrey * (1.0 - cover);
    return rgba;
}

}  // namespace

Result<PictureDifference> compare_pictures(const Picture& expected, const Picture& actual, double threshold) {
    if (expected.width != actual.width || expected.height != actual.height)
        return Error{fmt::format("a picture of {} x {} pixels; {} x {} were expected", actual.width, actual.height,
                                 expected.width, expected.height)};
    const size_t pixel_count = static_cast<size_t>(expected.width) * static_cast<size_t>(expected.height);
    PictureDifference difference;
    difference.image = {expected.width, expected.height, kPictureRgb, {}};
    difference.image.bytes.reserve(pixel_count * 3);
    size_t above = 0;
    for (size_t i = 0; i < pixel_count; ++i) {
        const auto wanted = seen_pixel(expected, i);
        const auto got = seen_pixel(actual, i);
        double pixel_largest = 0.0;
        for (size_t channel = 0; channel < kChannels; ++channel) {
            const double apart = std::abs(wanted[channel] - got[channel]);
            difference.mean += apart;
            pixel_largest = std::max(pixel_largest, apart);
            if (channel < 3)
                difference.image.bytes.push_back(static_cast<uint8_t>(std::min(apart * kAmplification, 255.0)));
        }
        difference.largest = std::max(difference.largest, pixel_largest);
        if (pixel_largest > threshold) ++above;
    }
    if (pixel_count == 0) return difference;
    difference.mean /= static_cast<double>(pixel_count * kChannels);
    difference.share_above = static_cast<double>(above) / static_cast<double>(pixel_count);
    return difference;
}

bool within_tolerance(const PictureDifference& difference, const PictureTolerance& tolerance) {
    return difference.mean <= tolerance.mean && difference.share_above <= tolerance.share_above;
}

}  // namespace stage
