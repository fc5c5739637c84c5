// The parameters, once: the list below becomes the slots of the block, the registration, and the reading of values.
#pragma once

#include <tovu/parameter_slots.h>

#include <cstdint>

namespace gather {

// CONTAINER(name, label)                         RADIO(name, label, initial, choices)
// INT(name, label, initial, minimum, maximum)    FLOAT(name, label, initial, minimum, maximum)
// BOOL(name, label, initial)
// Times are seconds, distances and speeds are in the units of the smoke's particles.
#define GATHER_PARAMETERS(CONTAINER, RADIO, INT, FLOAT, BOOL)             \
    CONTAINER(smoke_container, "Smoke Container")                         \
    RADIO(smoke_reference, "Smoke's Reference", 0, kReferenceChoices)     \
    CONTAINER(target_container, "Target Container")                       \
    RADIO(mode, "Mode", 0, kModeChoices)                                  \
    FLOAT(start_delay, "Start Delay", 1.0f, 0.0f, 1e6f)                   \
    FLOAT(gather_time, "Gather Time", 2.0f, 0.0f, 1e6f)                   \
    FLOAT(hold_time, "Hold Time", 3.0f, 0.0f, 1e6f)                       \
    FLOAT(release_time, "Release Time", 1.0f, 0.0f, 1e6f)                 \
    FLOAT(sweep, "Sweep along X", 50.0f, 0.0f, 100.0f)                    \
    FLOAT(strength, "Strength", 6.0f, 0.0f, 100.0f)                       \
    FLOAT(damping, "Damping", 80.0f, 0.0f, 400.0f)                        \
    FLOAT(scatter, "Scatter", 0.0f, 0.0f, 1e6f)                           \
    FLOAT(share, "Share of Particles", 100.0f, 0.0f, 100.0f)              \
    FLOAT(hold_phase, "Hold Phase", 30.0f, 0.0f, 90.0f)                   \
    INT(birth_limit, "Birth Limit per Frame", 25000, 0, 25000)            \
    FLOAT(death_acceleration, "Death Acceleration", 100.0f, 0.0f, 100.0f) \
    FLOAT(blow_x, "Blow X", 60.0f, -1e6f, 1e6f)                           \
    FLOAT(blow_y, "Blow Y", 20.0f, -1e6f, 1e6f)                           \
    FLOAT(blow_z, "Blow Z", 0.0f, -1e6f, 1e6f)                            \
    FLOAT(blow_spread, "Blow Spread", 50.0f, 0.0f, 100.0f)                \
    BOOL(set_colour, "Set Colour", 0)                                     \
    INT(held_red, "Held Red", 255, 0, 255)                                \
    INT(held_green, "Held Green", 190, 0, 255)                            \
    INT(held_blue, "Held Blue", 90, 0, 255)                               \
    INT(free_red, "Free Red", 200, 0, 255)                                \
    INT(free_green, "Free Green", 200, 0, 255)                            \
    INT(free_blue, "Free Blue", 200, 0, 255)                              \
    FLOAT(colour_time, "Colour Time", 0.5f, 0.0f, 1e6f)

enum Reference : int32_t { kReferenceLocal, kReferenceWorld };
enum Mode : int32_t { kModeTimed, kModeGather, kModeRelease };
constexpr int32_t kActionRestart = 1;  // of the push button

/// The first words of the block, as the host fills them.
struct Slots {
#define CONTAINER(name, label) uint32_t name;
#define RADIO(name, label, initial, choices) int32_t name;
#define INT(name, label, initial, minimum, maximum) int32_t name;
#define FLOAT(name, label, initial, minimum, maximum) float name;
#define BOOL(name, label, initial) int32_t name;
    GATHER_PARAMETERS(CONTAINER, RADIO, INT, FLOAT, BOOL)
#undef CONTAINER
#undef RADIO
#undef INT
#undef FLOAT
#undef BOOL
};

/// Typed reading, named as registered: numbers held to their range (not a number reads as the default), texts never
/// null.
namespace param {
#define CONTAINER(name, label)                    \
    inline const char* name(const Slots& slots) { \
        return tovu_slot_text(slots.name);        \
    }
#define RADIO(name, label, initial, choices)  \
    inline int32_t name(const Slots& slots) { \
        return slots.name;                    \
    }
#define INT(name, label, initial, minimum, maximum)                                                  \
    inline int32_t name(const Slots& slots) {                                                        \
        return slots.name < (minimum) ? (minimum) : slots.name > (maximum) ? (maximum) : slots.name; \
    }
#define FLOAT(name, label, initial, minimum, maximum)                                                \
    inline float name(const Slots& slots) {                                                          \
        if (slots.name != slots.name) return (initial);                                              \
        return slots.name < (minimum) ? (minimum) : slots.name > (maximum) ? (maximum) : slots.name; \
    }
#define BOOL(name, label, initial)         \
    inline bool name(const Slots& slots) { \
        return slots.name != 0;            \
    }
GATHER_PARAMETERS(CONTAINER, RADIO, INT, FLOAT, BOOL)
#undef CONTAINER
#undef RADIO
#undef INT
#undef FLOAT
#undef BOOL
}  // namespace param

/// All that PLUGIN_INIT has to say to the host.
void register_plugin();

/// Brackets the work of a frame, for hosts that time sections; registered once for the process.
extern int32_t gather_event;

}  // namespace gather
