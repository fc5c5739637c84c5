#include "frames.h"

#include <fmt/format.h>

#include "entry_point_call.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

void expect_one(Stage& stage, const Instance& instance, const char* entry_point, uint8_t returned) {
    if (returned == 1) return;
    complain(stage, describe_call(stage, entry_point, plugin(instance.plugin).name, instance.container_handle),
             fmt::format("returned {}; 1 is right", returned));
}

}  // namespace

void advance_frame(Stage& stage, int32_t retraces) {
    Clock& clock = stage.clock;
    ++clock.frame;
    clock.frame_has_run = false;
    clock.retrace_counter += retraces;
    if (clock.post_recording) clock.post_time_seconds += clock.frame_period_seconds;
}

void new_frame(Stage& stage) {
    stage.clock.frame_has_run = true;
    for (const int32_t handle : containers_in_tree_order(stage)) {
        Instance* instance = instance_of(stage, handle);
        if (!instance) continue;
        const uint8_t returned =
            call_entry_point(stage, *instance, "PLUGIN_NEW_GEOM", &EntryPoints::new_geom, int32_t{0});
        expect_one(stage, *instance, "PLUGIN_NEW_GEOM", returned);
    }
}

void run_frame(Stage& stage) {
    if (stage.clock.frame_has_run) advance_frame(stage);
    new_frame(stage);
}

void for_each_shown(Stage& stage, const std::function<void(const DrawItem&)>& draw) {
    for (const int32_t handle : containers_in_tree_order(stage)) {
        const Geometry* geometry = geometry_of(stage, handle);
        if (!geometry || !is_shown(stage, handle)) continue;
        draw({*find_container(stage, handle), world_matrix(stage, handle), total_opacity(stage, handle),
              geometry->instance != nullptr});
    }
}

bool call_render(Stage& stage, int32_t container_handle, int32_t render_flags, float opacity) {
    Instance* instance = instance_of(stage, container_handle);
    if (!instance) return false;
    const uint8_t returned =
        call_entry_point(stage, *instance, "PLUGIN_RENDER_OPENGL", &EntryPoints::render_opengl, render_flags, opacity);
    expect_one(stage, *instance, "PLUGIN_RENDER_OPENGL", returned);
    return true;
}

}  // namespace stage
