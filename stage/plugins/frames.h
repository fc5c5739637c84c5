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

/// Calls PLUGIN_NEW_GEOM of every instance, visible or not, in tree order. For plug-ins, no time has passed in a second
/// call for the same frame.
STAGE_EXPORT void new_frame(Stage& stage);

/// Simulates the current frame if it has not run yet, else the next one. The first call runs frame 0.
STAGE_EXPORT void run_frame(Stage& stage);

/// A container to draw.
struct DrawItem {
    const Container& container;
    Matrix world;       // container to world coordinates
    float opacity;      // product with the opacities of its parents, 0 to 1
    bool has_instance;  // call_render draws it; otherwise its geometry is meshes
};

/// Calls `draw` for every container that is shown (is_shown) and has a geometry, in tree order.
STAGE_EXPORT void for_each_shown(Stage& stage, const std::function<void(const DrawItem&)>& draw);

/// Calls PLUGIN_RENDER_OPENGL of the container's instance, which draws into the current OpenGL context. render_flags:
/// bit 0 is set for a reduced pass. False if the container has no instance.
STAGE_EXPORT bool call_render(Stage& stage, int32_t container_handle, int32_t render_flags, float opacity);

}  // namespace stage
