// The timeline at a moment: frames, and values between keys.
#pragma once

#include "scene_description.h"
#include "stage/stage_export.h"

namespace stage {

/// The number of pictures of the scene: its length in frames, rounded to nearest, at least 1.
STAGE_EXPORT int64_t frame_count(const SceneDescription& scene);

/// The number of frames that are simulated before the first picture.
STAGE_EXPORT int64_t prewarm_frames(const SceneDescription& scene);

/// The frame on screen at `seconds`: the last one that does not start later, with a tolerance of a millionth of a frame
/// because of rounding.
STAGE_EXPORT int64_t frame_at(const SceneDescription& scene, double seconds);

/// The first frame that does not start before `seconds`, in which a timeline entry is applied. Same tolerance.
STAGE_EXPORT int64_t first_frame_from(const SceneDescription& scene, double seconds);

/// A position between keys.
struct KeyMoment {
    size_t key = 0;         // the last key at or before the time, or the first key
    double fraction = 0.0;  // of the change to the next key, eased; 0 to below 1

    bool operator==(const KeyMoment&) const = default;
};

/// The fraction of the change after the fraction `part` (0 to 1) of the time: linear u, smooth 3u² - 2u³, step 0.
STAGE_EXPORT double eased(Ease ease, double part);

/// The moment at `seconds`. keys: one or more, with the fields `time`, in ascending order, and `ease`.
template <class Key>
KeyMoment key_moment(const std::vector<Key>& keys, double seconds) {
    size_t passed = 0;
    while (passed < keys.size() && keys[passed].time <= seconds) ++passed;
    if (passed == 0 || passed == keys.size()) return {passed == 0 ? 0 : passed - 1, 0.0};
    const Key& from = keys[passed - 1];
    const Key& to = keys[passed];
    return {passed - 1, eased(to.ease, (seconds - from.time) / (to.time - from.time))};
}

/// The value of a track at a time: constant before the first key and after the last, eased in between. Not for
/// geometry and parameters.
STAGE_EXPORT Triple track_value(const Track& track, double seconds);

/// The index into `files` of the picture at a time; -1 before and after a sequence that is played once.
STAGE_EXPORT int64_t picture_at(const ImageDescription& image, double seconds);

}  // namespace stage
