// Bursts: an exact number of births in one frame.
#pragma once

#include <tovu/exchange.h>

#include <cstdint>
#include <string>

#include "plugin_notes.h"
#include "stage/result.h"
#include "stage/scene/stage.h"

namespace stage {

/// An instance that can be told to give birth to an exact number of particles.
struct BurstTarget {
    int32_t container_handle = kNoObject;
    int32_t rate_index = 0;                            // of the parameter: births per second
    int32_t number_index = 0;                          // of the parameter: how many can be alive
    int32_t most = 0;                                  // that can be alive: the largest value of that parameter
    const ParticleExchangeBlock* particles = nullptr;  // the instance's; valid as long as the instance
    int32_t due = 0;                                   // births in the next frame
    Place place = {};                                  // of the last burst that became due

    // During a frame: what the two slots held before.
    uint32_t rate_bits = 0;
    uint32_t number_bits = 0;
};

/// Prepares an instance for bursts before its first frame: the addresses of its particle lists come from an attach
/// request, which is undone at once. births: of its plug-in's notes. Error: the plug-in does not answer the request.
Result<BurstTarget> make_burst_target(Stage& stage, int32_t container_handle, const BirthNotes& births);

/// Before a frame that begins a burst, the target's number of particles becomes that of the living and `due`, and its
/// rate so high that the time of one frame is enough for all: every free record is born, and no more. While more are
/// alive than the number of particles allows, it stays at that of the living, so that none is removed and none born.
/// Error: more would be alive than the plug-in takes.
Result<Done> begin_burst_frame(Stage& stage, BurstTarget& target);

/// After the frame: both parameters get their values back.
void end_burst_frame(Stage& stage, BurstTarget& target);

}  // namespace stage
