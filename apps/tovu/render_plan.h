// The plan of a render, checked before anything is simulated.
#pragma once

#include "fault_guard.h"
#include "output_plan.h"
#include "render_command.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

struct RenderPlan {
    stage::SceneDescription scene;                          // with the command line's changes
    std::vector<OutputPlan> outputs;                        // at least one
    FrameRange frames;                                      // from the first to the last frame of any output
    double plugin_timeout_seconds = kPluginTimeoutSeconds;  // 0: no limit
};

/// Reads the scene and applies the options. Checks everything that can be known without running the scene: the numbers,
/// the range of frames, the names of the outputs and whether their folders can be written to.
stage::Result<RenderPlan> plan_render(const RenderOptions& options);

}  // namespace tovu
