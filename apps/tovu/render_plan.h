// The plan of a render, checked before anything is simulated.
#pragma once

#include "fault_guard.h"
#include "render_command.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

enum class OutputKind { kStill, kNumbered, kVideo };

struct RenderPlan {
    stage::SceneDescription scene;  // with the command line's changes
    OutputKind kind = OutputKind::kStill;
    int first = 0;  // frames, both included
    int last = 0;
    double plugin_timeout_seconds = kPluginTimeoutSeconds;  // 0: none
};

/// Reads the scene and applies the options. Checks everything that can be known without running the scene: the numbers,
/// the range of frames, the name of the output and whether its folder can be written to.
stage::Result<RenderPlan> plan_render(const RenderOptions& options);

}  // namespace tovu
