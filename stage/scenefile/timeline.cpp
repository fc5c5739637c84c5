#include "timeline.h"

#include <algorithm>
#include <cmath>

namespace stage {

namespace {

constexpr double kFrameTolerance = 1e-6;  // in frames; much larger than the rounding error of time × rate

}  // namespace

int64_t frame_count(const SceneDescription& scene) {
    return std::max<int64_t>(1, std::llround(scene.length * scene.frame_rate));
}

int64_t prewarm_frames(const SceneDescription& scene) {
    return std::llround(scene.prewarm * scene.frame_rate);
}

int64_t frame_at(const SceneDescription& scene, double seconds) {
    return static_cast<int64_t>(std::floor(seconds * scene.frame_rate + kFrameTolerance));
}

int64_t first_frame_from(const SceneDescription& scene, double seconds) {
    return static_cast<int64_t>(std::ceil(seconds * scene.frame_rate - kFrameTolerance));
}

double eased(Ease ease, double part) {
    if (ease == Ease::kStep) return 0.0;
    return ease == Ease::kSmooth ? part * part * (3.0 - 2.0 * part) : part;
}

Triple track_value(const Track& track, double seconds) {
    const KeyMoment moment = key_moment(track.keys, seconds);
    Triple value = track.keys[moment.key].value;
    if (moment.fraction == 0.0) return value;
    const Triple& to = track.keys[moment.key + 1].value;
    for (size_t i = 0; i < 3; ++i)
        value[i] = static_cast<float>(value[i] + moment.fraction * (static_cast<double>(to[i]) - value[i]));
    return value;
}

int64_t picture_at(const ImageDescription& image, double seconds) {
    const auto count = static_cast<int64_t>(image.files.size());
    const auto picture = static_cast<int64_t>(std::floor((seconds - image.start) * image.frame_rate + kFrameTolerance));
    if (image.play == Play::kOnce) return picture < 0 || picture >= count ? -1 : picture;
    if (picture < 0) return 0;
    return image.play == Play::kLoop ? picture % count : std::min(picture, count - 1);
}

}  // namespace stage
