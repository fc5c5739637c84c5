// What is done to one particle in a frame. `number` is the particle's own: what looks random about it comes from there,
// so that the smoke's random numbers stay as they are. dt: seconds of the frame, above 0.
#pragma once

#include <tovu/particle_record.h>

#include "outline.h"
#include "parameters.h"

namespace gather {

/// The `claimed` of a particle that is left to itself. It moves and is seen, as it would be once released; but of a
/// released one the smoke's Death Acceleration cuts the life.
constexpr int32_t kFree = -1;

/// Whether the particle has a place: its `claimed` is the place's number and 1.
inline bool is_held(const Particle& particle) {
    return particle.claimed > 0;
}

/// Pulls toward the place like a damped spring and keeps the particle from growing old. pull: 0 to 1.
void hold(Particle& particle, int32_t number, const Place& place, float pull, const Slots& slots, float dt);

/// Lets go with the push that the parameters ask for.
void release(Particle& particle, int32_t number, const Slots& slots, float dt);

/// Lets go without a push.
void drop(Particle& particle);

/// Moves the colour toward the one that befits the pull: free at 0, held at 1.
void colour(Particle& particle, float pull, const Slots& slots, float dt);

/// The colour to be born with: the record still has that of a life before.
void colour_newborn(Particle& particle, const Slots& slots);

}  // namespace gather
