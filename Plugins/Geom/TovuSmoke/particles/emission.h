// Births: turns pooled records into live particles.
#pragma once

#include "../instance/smoke_instance.h"

namespace tovu {

/// An emission call ends after this many births in a row without a spawn point, so that a source that never returns one
/// cannot stall it.
constexpr int32_t kMaxRefusedInARow = 25000;

/// Makes up to `count` pooled records live particles. Each becomes the new active_head.
/// Converts speeds per second to displacements per frame with instance.time_step (seconds). Under Reference World reads
/// the carrying container's placement from the host and maps positions to the world.
/// A birth without a spawn point counts, but its record returns to the pool.
/// Returns false, keeping the particles made so far, if count is below 1, the spawn source is not usable, the pool is
/// empty, or kMaxRefusedInARow births in a row found no spawn point; also if a request during the call returned all
/// particles to the pool. Draws from the process-wide generator; the order of draws is part of the result.
bool emit_particles(SmokeInstance& instance, int32_t count);

/// A direction of length 1 within the opening angles, in radians: the x component uniform in ±`across` / pi, rotated
/// about the x axis by up to ±`swing` / 2 from +y. With both 0 it is +y.
/// An x component beyond ±1 is clamped. Draws one value for each angle that is not 0.
Vector3 cone_direction(float across, float swing);

}  // namespace tovu
