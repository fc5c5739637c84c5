// The parameters. Both lists become slots of the block, registration calls and clamped values, in the same order.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace gather {

// FLOAT(name, label, initial, minimum, maximum): times in seconds, lengths and speeds in units of the smoke's particles
#define GATHER_FLOATS(FLOAT)                              \
    FLOAT(start_delay, "Start Delay", 1.0f, 0.0f, 1e6f)   \
    FLOAT(gather_time, "Gather Time", 2.0f, 0.0f, 1e6f)   \
    FLOAT(hold_time, "Hold Time", 3.0f, 0.0f, 1e6f)       \
    FLOAT(release_time, "Release Time", 1.0f, 0.0f, 1e6f) \
    FLOAT(sweep, "Sweep along X", 50.0f, 0.0f, 100.0f)    \
    FLOAT(strength, "Strength", 6.0f, 0.0f, 100.0f)       \
    FLOAT(damping, "Damping", 80.0f, 0.0f, 400.0f)        \
    FLOAT(scatter, "Scatter", 0.0f, 0.0f, 1e6f)           \
    FLOAT(hold_phase, "Hold Phase", 30.0f, 0.0f, 90.0f)   \
    FLOAT(blow_x, "Blow X", 60.0f, -1e6f, 1e6f)           \
    FLOAT(blow_y, "Blow Y", 20.0f, -1e6f, 1e6f)           \
    FLOAT(blow_spread, "Blow Spread", 50.0f, 0.0f, 100.0f)
// COLOUR(name, label, initial): 0 to 255
#define GATHER_COLOURS(COLOUR)            \
    COLOUR(held_red, "Held Red", 255)     \
    COLOUR(held_green, "Held Green", 190) \
    COLOUR(held_blue, "Held Blue", 90)    \
    COLOUR(free_red, "Free Red", 200)     \
    COLOUR(free_green, "Free Green", 200) \
    COLOUR(free_blue, "Free Blue", 200)

enum Reference : int32_t { kReferenceLocal, kReferenceWorld };

/// The first words of the block. The host fills them; they may hold any bits.
struct Slots {
    uint32_t smoke_container;   // a name
    int32_t smoke_reference;    // a Reference
    uint32_t target_container;  // a name
#define FLOAT(name, label, initial, minimum, maximum) float name;
#define COLOUR(name, label, initial) int32_t name;
    GATHER_FLOATS(FLOAT)
    GATHER_COLOURS(COLOUR)
#undef FLOAT
#undef COLOUR
};

/// A copy with numbers clamped to their range; not-a-number becomes the default.
inline Slots clamped(Slots slots) {
#define FLOAT(name, label, initial, minimum, maximum) \
    slots.name = std::isnan(slots.name) ? initial : std::clamp(slots.name, minimum, maximum);
#define COLOUR(name, label, initial) slots.name = std::clamp(slots.name, 0, 255);
    GATHER_FLOATS(FLOAT)
    GATHER_COLOURS(COLOUR)
#undef FLOAT
#undef COLOUR
    return slots;
}

}  // namespace gather
