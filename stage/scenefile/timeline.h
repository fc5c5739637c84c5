// What a scene's timeline says about a moment: frames, and containers moved between keyed values.
#pragma once

#include "stage/scenefile/scene_description.h"
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

/// The value of a track at a time: held before the first key and after the last, eased in between
/// (smooth is 3u² - 2u³, which starts and ends at rest).
STAGE_EXPORT Triple track_value(const Track& track, double seconds);

}  // namespace stage
