// A host for scenarios: a Stage with the built smoke plug-in, which tests run frame by frame and inspect from outside.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "instance/smoke_instance.h"
#include "stage/call_log.h"
#include "stage/plugins/frames.h"
#include "stage/plugins/instance.h"
#include "stage/scene/stage.h"

namespace tovu {

/// `values` with the values of `more`, which replace those of the same name.
stage::ParameterValues with(stage::ParameterValues values, const stage::ParameterValues& more);

/// A smoke in the scene.
struct SmokeHandle {
    int32_t container = -1;
    int32_t geometry = -1;
};

/// A host with one Stage, which is current while the host exists. All instances draw from the process-wide `rand`,
/// which the constructor seeds with `seed`, so that a test can draw the same numbers. Functions throw
/// std::runtime_error with the Stage's message, which fails the test. OpenGL calls do nothing until a test sets another
/// function table.
class TestHost {
  public:
    explicit TestHost(uint32_t seed = 1, double period_seconds = 0.02);

    stage::Stage& stage() { return *stage_; }
    stage::PluginId smoke_plugin() const { return plugin_; }

    /// Adds a container with a smoke with these values and defaults for all others.
    SmokeHandle add_smoke(const stage::ParameterValues& values = {}, const std::string& name = "smoke",
                          int32_t parent_container = -1);
    /// Adds a container with these outlines.
    int32_t add_outlines(const std::string& name, std::vector<stage::Mesh> meshes, int32_t parent_container = -1);

    /// Gives a container an instance of another plug-in.
    void add_instance(int32_t container_handle, const char* library, const stage::ParameterValues& values);

    /// The container, for changes of placement, visibility and appearance. The reference is valid while it exists.
    stage::Container& container(SmokeHandle smoke);
    stage::Container& container(int32_t container_handle);

    void set(SmokeHandle smoke, std::string_view parameter, const stage::ParameterValue& value);
    void set(int32_t container_handle, std::string_view parameter, const stage::ParameterValue& value);
    stage::ParameterValue get(SmokeHandle smoke, std::string_view parameter);
    void press(SmokeHandle smoke, std::string_view button);

    /// Simulates this many frames, frame 0 first.
    void run_frames(int count);
    /// Calls the smoke's PLUGIN_RENDER_OPENGL once, without the OpenGL state that a pass sets around it.
    void render(SmokeHandle smoke, int32_t render_flags = 0, float opacity = 1.0f);

    /// The instance's block, which a test may also write to.
    SmokeInstance& block(SmokeHandle smoke);
    int active_count(SmokeHandle smoke);
    /// The lists from head to tail. Throws if a record's prev is not the record before it, or if a list has more
    /// records than a pool can have.
    std::vector<Particle*> active(SmokeHandle smoke);
    std::vector<Particle*> inactive(SmokeHandle smoke);
    std::vector<Particle*> deleted(SmokeHandle smoke);

    bool has_bounding_box(SmokeHandle smoke);
    /// The last bounding box that the smoke sent. Throws if there is none.
    stage::BoundingBox bounding_box(SmokeHandle smoke);

    /// Records every call of the plug-in to the host from now on, both services and OpenGL.
    void start_recording();
    /// The recorded calls as texts such as "_api__object_valid(33554433)".
    std::vector<std::string> calls() const;
    std::vector<std::string> call_names() const;
    int count_calls(std::string_view name) const;

    /// Violations of the contract by the plug-in, one line each.
    std::vector<std::string> complaints() const;

  private:
    stage::StagePtr stage_;
    stage::PluginId plugin_ = 0;
};

}  // namespace tovu
