// Frames: the clock advances, plug-ins simulate and draw.
#pragma once

#include <cstdint>
#include <functional>

#include "stage/scene/transform.h"
#include "stage/stage_export.h"

namespace stage {

struct Stage;
struct Container;

/// Advances to the next frame: frame number and clocks by one period, the retrace counter by `retraces` (1, or more
/// when frames were dropped).
STAGE_EXPORT void advance_frame(Stage& stage, int32_t retraces = 1);

/// Lets every instance, visible or not, simulate the current frame in tree order (PLUGIN_NEW_GEOM). When called again
/// in the same frame, plug-ins see that no time has passed.
STAGE_EXPORT void new_frame(Stage& stage);

/// Simulates a frame: the current one when it has not run yet, else the next. The first call runs frame 0.
STAGE_EXPORT void run_frame(Stage& stage);

/// A container to draw.
struct DrawItem {
    const Container& container;
    Matrix world;       // container to world coordinates
    float opacity;      // its own times its parents', 0 to 1
    bool has_instance;  // call_render draws it; otherwise its geometry is meshes
};

/// Calls `draw` for every container that is shown (is_shown) and has a geometry, in tree order.
STAGE_EXPORT void for_each_shown(Stage& stage, const std::function<void(const DrawItem&)>& draw);

/// Lets the container's instance draw into the current OpenGL context (PLUGIN_RENDER_OPENGL). render_flags: bit 0 set
/// for a reduced pass. False when the container carries no instance.
STAGE_EXPORT bool call_render(Stage& stage, int32_t container_handle, int32_t render_flags, float opacity);

}  // namespace stage
