// Turns pooled records into new particles.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// Brings up to `count` pooled records to life and pushes each at `active_head`, so the last one made is the head.
/// Speeds per second become per frame through instance.time_step (seconds). Under Reference World the carrying
/// container's placement is read from the host and positions are fixed in the world.
/// Returns false when count is below 1, the spawn source is not usable, the pool ran dry, or 25000 births in a row
/// found no spawn point; those made stay alive. The record of a birth without a spawn point goes back to the pool, and
/// the birth counts as made. Returns false too when the particles were sent back to the pool while a spawn plug-in was
/// asked. Draws from the process-wide generator; the order of draws is part of the result.
bool emit_particles(SmokeInstance& instance, int32_t count);

/// A direction of length 1 within the opening angles, in radians: the x component uniform in ±`across` / pi, swung
/// about the x axis by up to ±`swing` / 2 from +y. With both 0 it is +y.
/// Angles beyond half a turn across are cut off at ±x. Draws one value for each angle that is not 0.
Vector3 cone_direction(float across, float swing);

}  // namespace tovu
