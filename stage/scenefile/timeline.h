// What a scene's timeline says about a moment: frames, and containers moved between keyed values.
#pragma once

#include "scene_description.h"
#include "stage/stage_export.h"

namespace stage {

/// Pictures of the scene: its length in whole frames, the nearest number, at least 1.
STAGE_EXPORT int64_t frame_count(const SceneDescription& scene);

/// Frames simulated before the first picture.
STAGE_EXPORT int64_t prewarm_frames(const SceneDescription& scene);

/// The frame on screen at `seconds`: the last one that starts no later. Rounding errors of a time that means a
/// frame's start exactly do not take it to the frame before.
STAGE_EXPORT int64_t frame_at(const SceneDescription& scene, double seconds);

/// The first frame that starts no earlier than `seconds`: from when a timeline entry counts.
STAGE_EXPORT int64_t first_frame_from(const SceneDescription& scene, double seconds);

/// Where a moment lies among keys.
struct KeyMoment {
    size_t key = 0;    // the last key that counts, the first one before all of them
    double way = 0.0;  // from its value to the next key's, eased; 0 to below 1

    bool operator==(const KeyMoment&) const = default;
};

/// How much of the way to a key of this ease is behind at `part` of the time, 0 to 1: linear is u, smooth 3u² - 2u³,
/// which starts and ends at rest, step 0.
STAGE_EXPORT double eased(Ease ease, double part);

/// The moment at `seconds` among one or more keys with the fields `time`, none below the one before, and `ease`.
template <class Key>
KeyMoment key_moment(const std::vector<Key>& keys, double seconds) {
    size_t passed = 0;
    while (passed < keys.size() && keys[passed].time <= seconds) ++passed;
    if (passed == 0 || passed == keys.size()) return {passed == 0 ? 0 : passed - 1, 0.0};
    const Key& from = keys[passed - 1];
    const Key& to = keys[passed];
    return {passed - 1, eased(to.ease, (seconds - from.time) / (to.time - from.time))};
}

/// The value of a track at a time: held before the first key and after the last, eased in between. Not for geometry.
STAGE_EXPORT Triple track_value(const Track& track, double seconds);

/// Which of an image's pictures is shown at a time: its position in `files`; -1 for none, before and after one that is
/// played once.
STAGE_EXPORT int64_t picture_at(const ImageDescription& image, double seconds);

}  // namespace stage
