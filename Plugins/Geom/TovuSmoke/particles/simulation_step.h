// One frame of one smoke: time, pool, placement, births, the walk over the live particles, the bounding box.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Advances the instance by one frame of the host; a frame already simulated changes nothing, nor does one whose time
/// is not a number or has no end. A negative time counts as 0. Draws random numbers for
/// births first, then for the turbulence of each particle, youngest first.
void simulation_step(SmokeInstance& instance);

/// Seconds to advance: the host's frame period, or the difference on its post-recording clock. 0: this frame was
/// simulated already; negative: no previous time on that clock is known.
double compute_time_step(SmokeInstance& instance);

}  // namespace tovu
