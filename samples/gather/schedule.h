// When to gather and when to let go.
#pragma once

#include "parameters.h"

namespace gather {

/// The instance's own clock.
struct Schedule {
    int32_t last_retrace = 0;
    float last_post_time = -1;  // negative: none seen yet
    float frame_seconds = 0;    // of the frame that runs; 0 when it has run already
    double seconds = 0;         // since the mode changed or Restart was pressed
    int32_t mode = -1;          // as seen last
};

enum class Stage { Free, Gathering, Releasing };

/// Where the sequence stands.
struct Moment {
    Stage stage;
    float seconds;  // since the stage began
};

/// Reads the host's clock: the post-recording one while a clip is recorded, else one frame period for every new frame.
/// False when no time has passed since the last call, or the clock has just changed hands.
bool advance(Schedule& schedule, const Slots& slots);

Moment current_moment(const Schedule& schedule, const Slots& slots);

/// From 0 to 1: how strongly a particle is pulled, `seconds` into gathering. across: 0 to 1, where the particle's place
/// lies along X; the sweep makes high ones start later, and all are done after the gather time.
float pull_ramp(const Slots& slots, float seconds, float across);

/// Whether a particle with its place at `across` is let go, `seconds` into releasing.
bool is_let_go(const Slots& slots, float seconds, float across);

}  // namespace gather
