// Runs a built scene frame by frame, with its timeline.
#pragma once

#include "scene_build.h"

namespace stage {

struct SceneRun {
    BuiltScene built;
    int64_t next_frame = 0;  // below 0 while the scene is pre-warmed
    size_t next_entry = 0;   // index in the timeline
};

/// A run of a scene just built, before its first frame. To seek back, start a new run.
STAGE_EXPORT SceneRun start_run(BuiltScene built);

/// Runs all frames up to and including `frame` without drawing, pre-warming frames included. Frame 0 is the first
/// picture. Does nothing if the frame was run before. Timeline entries of a frame are applied before the plug-ins
/// simulate it; tracks, shapes and images have their state at the start of the frame. The error names the place in the
/// scene file.
STAGE_EXPORT Result<Done> run_until(SceneRun& run, int64_t frame);

}  // namespace stage
