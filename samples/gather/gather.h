// A consumer of smoke: attaches to a smoke, claims its particles, pulls them onto the outline of another container,
// releases them, and detaches at clean-up. It draws nothing itself.
#pragma once

#include <cstdint>

#include "parameters.h"

namespace gather {

/// The block: first the slots, which the host fills, then the instance's own state. It stores only a handle of the
/// smoke. The number of a particle is stored in its `Particle::claimed`, so that no table is needed.
struct Gather {
    Slots slots;
    int32_t last_retrace = 0;
    float last_post_seconds = -1;        // negative: no post-recording time seen yet
    double seconds = 0;                  // since the first frame or since Restart was pressed
    int32_t smoke_geometry_handle = -1;  // of the attached smoke
    int32_t last_number = 0;             // given to the particle that was claimed last
};

/// Attaches, claims, pulls and releases. Does nothing in a second call for the same frame.
void run_frame(Gather& gather);

/// Detaches from the smoke if it still exists. All of the smoke's live particles vanish.
void detach(Gather& gather);

}  // namespace gather
