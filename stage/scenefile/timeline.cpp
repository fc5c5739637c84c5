#include "stage/scenefile/timeline.h"

#include <algorithm>
#include <cmath>

namespace stage {

namespace {

constexpr double kFrameTolerance = 1e-6;  // of a frame: far above the rounding of time × rate, far below a frame

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

Triple track_value(const Track& track, double seconds) {
    if (seconds <= track.keys.front().time) return track.keys.front().value;
    for (size_t k = 1; k < track.keys.size(); ++k) {
        const TrackKey& from = track.keys[k - 1];
        const TrackKey& to = track.keys[k];
        if (seconds >= to.time) continue;
        double u = (seconds - from.time) / (to.time - from.time);
        if (to.ease == Ease::kSmooth) u = u * u * (3.0 - 2.0 * u);
        Triple value{};
        for (size_t i = 0; i < 3; ++i)
            value[i] = static_cast<float>(from.value[i] + u * (static_cast<double>(to.value[i]) - from.value[i]));
        return value;
    }
    return track.keys.back().value;
}

}  // namespace stage
