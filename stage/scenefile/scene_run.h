// Running a built scene frame by frame, with its timeline.
#pragma once

#include "scene_build.h"

namespace stage {

struct SceneRun {
    BuiltScene built;
    int64_t next_frame = 0;  // the frame that is run next; below 0 while the scene is pre-warmed
    size_t next_entry = 0;   // of the timeline
};

/// A run of a scene just built, before its first frame. To seek back, start a new run.
STAGE_EXPORT SceneRun start_run(BuiltScene built);

/// Runs frames, pre-warming ones included, up to and with `frame` (0 is the first picture), without drawing. Does
/// nothing when it was run before.
/// Timeline entries of a frame apply before the plug-ins simulate it; containers in motion, shapes and images have
/// their state at the frame's start. The error names the place in the scene file.
STAGE_EXPORT Result<Done> run_until(SceneRun& run, int64_t frame);

}  // namespace stage
