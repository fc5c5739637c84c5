// A consumer of smoke: claims the particles of a smoke, pulls them onto the outline of another container and lets them
// go. One instance for each container that carries this plug-in; it draws nothing itself.
#pragma once

#include <tovu/exchange.h>

#include "outline.h"
#include "parameters.h"
#include "schedule.h"

namespace gather {

/// The block: the slots first, as the host fills them, then the instance's own state, built in place. Of the smoke it
/// keeps a handle and no pointer: the exchange block is asked for anew in every frame, and which place belongs to which
/// particle is written in the particle (`is_held`).
struct Gather {
    Slots slots;
    Schedule schedule;
    Outline outline;
    int32_t smoke_geometry_handle = -1;  // of the smoke that this instance is attached to
    bool was_gathering = false;          // in the frame before
    int32_t next_number = 0;             // of the place of the next particle that is claimed
    uint32_t offered = 0;                // particles that could have been claimed so far: the share counts on them
};

/// The frame's work: follows the smoke, claims, pulls, colours and releases.
void run_frame(Gather& gather);

/// Begins the timed sequence anew.
void restart(Gather& gather);

/// Detaches from the smoke if it is still there. The smoke's live particles vanish with that.
void detach(Gather& gather);

}  // namespace gather
