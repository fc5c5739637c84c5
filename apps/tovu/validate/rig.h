// The scene that checks put a plug-in into, and what they do with it there.
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
    bool keeps_to_itself = false;  // values_to_try names no container that carries a plug-in

    Rig() = default;
    ~Rig();  // cleans up its instances
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;
};

/// Memory for checks that look for other things: wide margins around blocks and texts, so that a write beyond them
/// does no harm.
stage::MemoryOptions wide_memory();

/// A scene with the plug-in loaded and no instance of it. Throws std::runtime_error where it does not load.
std::unique_ptr<Rig> make_rig(const Subject& subject, const stage::MemoryOptions& memory = wide_memory());

const stage::Plugin& plugin_of(const Rig& rig);

/// Gives a container an instance, with the defaults but for `values`.
void add_instance(Rig& rig, int32_t container, const stage::ParameterValues& values = {});

/// Simulates the next frame of all instances, the model smoke first.
void run_frame(Rig& rig, int32_t retraces = 1);
/// One pass of the container's instance.
void draw(Rig& rig, int32_t container, bool is_reduced = false, float opacity = 1);

/// Values to try. 0: the defaults, with the scene's container and image in place of empty names; from 1 on: values
/// inside their ranges, drawn from the rig's random numbers.
stage::ParameterValues values_to_try(Rig& rig, int number);

/// As 0 of values_to_try, with the name of one container in place of the parameter's number `position` among those that
/// name containers.
stage::ParameterValues values_with_container(const Rig& rig, size_t position, const std::string& name);

/// The parameters that take the names of containers.
std::vector<const stage::ParameterInfo*> container_parameters(const Rig& rig);

/// One parameter each: both ends of a range, the other value of a switch, every choice; evenly left out beyond `most`.
std::vector<stage::ParameterValues> limits_to_try(const Rig& rig, size_t most, bool with_numbers = true);

/// What a smoke asks of a spawn source, and a request of a stranger. The answers go into the call log.
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
/// The life of an instance, from PLUGIN_INIT_FUNCTION to PLUGIN_CLEANUP_FUNCTION, with many values, passes of both
/// kinds, requests, buttons, a recording, dropped frames, a frame run twice.
void tour(Rig& rig, const TourOptions& options = {});

}  // namespace tovu::validate
