// The Stage: a stand-in host that loads plug-ins, keeps a scene for them and answers their calls.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "call_watch.h"
#include "camera.h"
#include "clock.h"
#include "complaints.h"
#include "container.h"
#include "geometry.h"
#include "handles.h"
#include "image.h"
#include "memory_options.h"
#include "overrides.h"
#include "profile.h"

namespace stage {

struct StageOptions {
    uint32_t seed = 1;
    double frame_period_seconds = 0.02;  // above 0
    /// All instances draw from the process-wide `rand`, seeded at the creation of the Stage, instead of from separate
    /// streams, so that tests can repeat every number.
    bool shared_random = false;
    MemoryOptions memory{};
};

/// An entry point that is running; dispatcher calls nest.
struct RunningCall {
    const char* entry_point;  // exported name
    Instance* instance;
    const char* plugin_name;
    int32_t container_handle;              // carries the instance
    size_t open_sections;                  // number of open profiling sections at its start
    std::span<const CallValue> arguments;  // after the instance
    bool has_result = false;               // true after it has returned a value
    int32_t result = 0;
};

/// One scene and everything in it. All fields may be read. Callers may change camera, clock, overrides, complaints, the
/// profile's sink, and the fields that Container names; functions maintain the others.
/// A Stage and its plug-ins are used from one thread.
struct Stage {
    StageOptions options;
    int32_t last_number = 0;  // object numbers start at 1, ascend in the order of creation and are never reused
    std::unordered_map<int32_t, Container> containers;  // by handle
    std::unordered_map<int32_t, Geometry> geometries;   // by handle
    std::unordered_map<int32_t, Image> images;          // by handle
    std::vector<int32_t> root_handles;                  // containers without a parent, in the order they were added
    std::vector<int32_t> instance_handles;              // geometries with an instance, oldest first
    int32_t camera_handle = kNoObject;
    Camera camera;
    Clock clock;
    Profile profile;
    Complaints complaints;
    Overrides overrides;
    std::vector<RunningCall> running;  // outermost first
};

struct DestroyStage {
    STAGE_EXPORT void operator()(Stage* stage) const;
};
/// The destructor cleans up the instances, the newest first. Must not run inside one of their entry points.
using StagePtr = std::unique_ptr<Stage, DestroyStage>;

/// Cleans up all instances, the newest first, and removes their geometries. Complaints during the clean-up can be read
/// afterwards, which is not possible with the destructor of the Stage.
STAGE_EXPORT void remove_instances(Stage& stage);

/// Creates an empty Stage with a camera, and makes it current.
STAGE_EXPORT StagePtr make_stage(const StageOptions& options = {});

/// The Stage that answers the exported services, or null. Functions that call a plug-in make its Stage current until
/// they return.
STAGE_EXPORT Stage* current_stage();
STAGE_EXPORT void make_current(Stage* stage);

/// True if an entry point of the instance is running, or waits for a dispatcher call that it made.
bool is_running(const Stage& stage, const Instance& instance);

/// True if the object exists: a container, geometry, image or camera, or the position or direction of a camera.
STAGE_EXPORT bool is_alive(const Stage& stage, int32_t handle);

/// The handle of the container, geometry or image with this number, or kNoObject.
STAGE_EXPORT int32_t find_object_by_number(const Stage& stage, int32_t number);

/// The next free number as a handle of this kind, or kNoObject when all are used.
int32_t new_handle(Stage& stage, ObjectKind kind);

}  // namespace stage
