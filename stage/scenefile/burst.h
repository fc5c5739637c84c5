// Bursts: an exact number of births in one frame.
#pragma once

#include <tovu/exchange.h>

#include <cstdint>
#include <string>

#include "plugin_notes.h"
#include "stage/result.h"
#include "stage/scene/stage.h"

namespace stage {

/// An instance prepared for bursts.
struct BurstTarget {
    int32_t container_handle = kNoObject;
    int32_t rate_index = 0;                            // index of the parameter: births per second
    int32_t number_index = 0;                          // index of the parameter: size of the pool
    int32_t most = 0;                                  // largest value of that parameter
    const ParticleExchangeBlock* particles = nullptr;  // of the instance; valid as long as the instance
    int32_t due = 0;                                   // births in the next frame
    Place place = {};                                  // of the latest burst

    // The bits of the two slots before the frame of a burst.
    uint32_t rate_bits = 0;
    uint32_t number_bits = 0;
};

/// Prepares an instance for bursts before its first frame. An attach request, followed by a detach, gives the addresses
/// of its particle lists. births: from the notes of its plug-in. Error: the plug-in does not answer the request.
Result<BurstTarget> make_burst_target(Stage& stage, int32_t container_handle, const BirthNotes& births);

/// Call before a frame. If a burst is due, sets the pool to the number of live particles plus `due`, and the rate so
/// high that one frame fills the pool: exactly `due` particles are born. In later frames, as long as more particles are
/// alive than the scene's pool holds, keeps the pool at the number of live particles, so that none is removed or born.
/// Error: more particles would be alive than the plug-in supports.
Result<Done> begin_burst_frame(Stage& stage, BurstTarget& target);

/// Call after the frame. Restores both parameters.
void end_burst_frame(Stage& stage, BurstTarget& target);

}  // namespace stage
