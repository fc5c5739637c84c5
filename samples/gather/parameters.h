// The parameters. One list becomes the slots of the block, the registration and the clamping.
#pragma once

#include <algorithm>
#include <cstdint>

namespace gather {

// CONTAINER(name, label)   RADIO(name, label, initial, choices)   FLOAT(name, label, initial, minimum, maximum)
// COLOUR(name, label, initial): 0 to 255
// The order is the order of the slots. Times are in seconds, lengths and speeds in the units of the smoke's particles.
#define GATHER_PARAMETERS(CONTAINER, RADIO, FLOAT, COLOUR)                          \
    CONTAINER(smoke_container, "Smoke Container")                                   \
    RADIO(smoke_reference, "Smoke's Reference", kReferenceLocal, kReferenceChoices) \
    CONTAINER(target_container, "Target Container")                                 \
    FLOAT(start_delay, "Start Delay", 1.0f, 0.0f, 1e6f)                             \
    FLOAT(gather_time, "Gather Time", 2.0f, 0.0f, 1e6f)                             \
    FLOAT(hold_time, "Hold Time", 3.0f, 0.0f, 1e6f)                                 \
    FLOAT(release_time, "Release Time", 1.0f, 0.0f, 1e6f)                           \
    FLOAT(sweep, "Sweep along X", 50.0f, 0.0f, 100.0f)                              \
    FLOAT(strength, "Strength", 6.0f, 0.0f, 100.0f)                                 \
    FLOAT(damping, "Damping", 80.0f, 0.0f, 400.0f)                                  \
    FLOAT(scatter, "Scatter", 0.0f, 0.0f, 1e6f)                                     \
    FLOAT(hold_phase, "Hold Phase", 30.0f, 0.0f, 90.0f)                             \
    FLOAT(blow_x, "Blow X", 60.0f, -1e6f, 1e6f)                                     \
    FLOAT(blow_y, "Blow Y", 20.0f, -1e6f, 1e6f)                                     \
    FLOAT(blow_spread, "Blow Spread", 50.0f, 0.0f, 100.0f)                          \
    COLOUR(held_red, "Held Red", 255)                                               \
    COLOUR(held_green, "Held Green", 190)                                           \
    COLOUR(held_blue, "Held Blue", 90)                                              \
    COLOUR(free_red, "Free Red", 200)                                               \
    COLOUR(free_green, "Free Green", 200)                                           \
    COLOUR(free_blue, "Free Blue", 200)

enum Reference : int32_t { kReferenceLocal, kReferenceWorld };
constexpr int32_t kActionRestart = 1;  // number of the push button

/// The first words of the block. The host fills them; they may hold any bits.
struct Slots {
#define CONTAINER(name, label) uint32_t name;
#define RADIO(name, label, initial, choices) int32_t name;
#define FLOAT(name, label, initial, minimum, maximum) float name;
#define COLOUR(name, label, initial) int32_t name;
    GATHER_PARAMETERS(CONTAINER, RADIO, FLOAT, COLOUR)
#undef CONTAINER
#undef RADIO
#undef FLOAT
#undef COLOUR
};

/// A copy with numbers clamped to their range; not-a-number becomes the default.
inline Slots clamped(Slots slots) {
#define CONTAINER(name, label)
#define RADIO(name, label, initial, choices)
#define FLOAT(name, label, initial, minimum, maximum) \
    slots.name = slots.name == slots.name ? std::clamp(slots.name, minimum, maximum) : initial;
#define COLOUR(name, label, initial) slots.name = std::clamp(slots.name, 0, 255);
    GATHER_PARAMETERS(CONTAINER, RADIO, FLOAT, COLOUR)
#undef CONTAINER
#undef RADIO
#undef FLOAT
#undef COLOUR
    return slots;
}

}  // namespace gather
