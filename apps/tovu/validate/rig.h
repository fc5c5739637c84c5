// The scene in which checks run a plug-in, and common ways to run it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "checks.h"
#include "model_smoke.h"
#include "stage/plugins/instance.h"
#include "stage/scene/stage.h"

namespace tovu::validate {

struct Rig {
    const Subject* subject = nullptr;
    stage::StagePtr stage;
    stage::PluginId plugin = 0;
    int32_t outline_container = -1;  // "outline": two meshes
    int32_t carrier = -1;            // "subject": carries the plug-in
    int32_t other_carrier = -1;      // "other": for a second instance
    ModelSmoke smoke;                // in the container "smoke"
    std::mt19937 random;             // seeded by the subject's seed
    int request_depth = 0;
    bool keeps_to_itself = false;  // values_to_try names no container with a plug-in

    Rig() = default;
    ~Rig();  // cleans up its instances
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;
};

/// Wide margins around blocks and texts, for checks that do not test bounds: a write out of bounds does no harm.
stage::MemoryOptions wide_memory();

/// A scene with the plug-in loaded, without an instance. Throws std::runtime_error if the plug-in does not load.
std::unique_ptr<Rig> make_rig(const Subject& subject, const stage::MemoryOptions& memory = wide_memory());

const stage::Plugin& plugin_of(const Rig& rig);

/// Gives a container an instance with `values` and defaults for all other parameters.
void add_instance(Rig& rig, int32_t container, const stage::ParameterValues& values = {});

/// Simulates the next frame of all instances, the model smoke first.
void run_frame(Rig& rig, int32_t retraces = 1);
/// One pass of the container's instance.
void draw(Rig& rig, int32_t container, bool is_reduced = false, float opacity = 1);

/// Values to try. number 0: the defaults, with the names of the scene's container and image; from 1 on: random values
/// inside their ranges.
stage::ParameterValues values_to_try(Rig& rig, int number);

/// Names of the scene's image and container, with `name` for the container parameter at index `position` of
/// container_parameters.
stage::ParameterValues values_with_container(const Rig& rig, size_t position, const std::string& name);

/// The parameters that take the names of containers.
std::vector<const stage::ParameterInfo*> container_parameters(const Rig& rig);

/// Sets of one value each: both ends of a range, the other value of a switch, every choice. At most `most` of them,
/// evenly chosen.
std::vector<stage::ParameterValues> limits_to_try(const Rig& rig, size_t most, bool with_numbers = true);

/// Sends the requests that a smoke sends to a spawn source, and an unknown one. Adds the answers to the call log.
void send_requests(Rig& rig);

void set_values(Rig& rig, int32_t container, const stage::ParameterValues& values, bool notify);
void press_all_buttons(Rig& rig, int32_t container);

struct TourOptions {
    int settings = 8;                  // number of sets from values_to_try
    int frames = 4;                    // run with each set
    bool vanishing = true;             // containers and images come and go
    bool limits = true;                // each parameter at the ends of its range
    std::function<void()> each_frame;  // called after each frame; may be empty
};
/// Runs an instance from PLUGIN_INIT_FUNCTION to PLUGIN_CLEANUP_FUNCTION with many values, normal and reduced passes,
/// requests, buttons, a recording, dropped frames and a frame that runs twice.
void tour(Rig& rig, const TourOptions& options = {});

}  // namespace tovu::validate
