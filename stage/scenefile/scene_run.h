// Running a built scene frame by frame, with its timeline.
#pragma once

#include "scene_build.h"

namespace stage {

struct SceneRun {
    BuiltScene built;
    int64_t next_frame = 0;  // the frame that is run next; below 0 while the scene is pre-warmed
    size_t next_entry = 0;   // of the timeline
};

/// A scene just built, before its first frame. Going back in time is starting anew.
STAGE_EXPORT SceneRun start_run(BuiltScene built);

/// Runs frames, pre-warming ones included, until `frame` (0 is the first picture) has been run; draws nothing. Nothing
/// happens when it has been run already. What the timeline says for a frame counts before the plug-ins simulate it;
/// containers in motion stand where they are at the frame's start, and so do shapes and images. The error names the
/// place in the scene file.
STAGE_EXPORT Result<Done> run_until(SceneRun& run, int64_t frame);

}  // namespace stage
