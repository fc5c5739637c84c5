// The rules of a step that are applied to one particle at a time: participation, age, Death Acceleration, path angle.
#pragma once

#include "step_values.h"

namespace tovu {

/// While a consumer is attached, only claimed and released particles take part in a step.
inline bool takes_part(const Particle& p, const StepValues& values) {
    return !values.consumer || p.claimed || p.released;
}

/// Adds `time_step` seconds to the age. Returns whether the particle lives on.
inline bool survives(Particle& p, float time_step) {
    p.age += time_step;
    return !(p.age > p.life);
}

/// Death Acceleration: shortens the remaining life of a particle that has left its spawn area or that the consumer has
/// released. Happens once in a life: call it only while `values.accelerate` is set and `p.accelerated` is 0. Asks the
/// spawn plug-in when `asks_plugin(values)`.
void accelerate_death(Particle& p, const StepValues& values);

/// Whether Death Acceleration asks a spawn plug-in about each particle. That plug-in may draw random numbers, make the
/// host load images anew, attach a consumer or empty the active list.
inline bool asks_plugin(const StepValues& values) {
    return values.inside.way == InsideTest::kAskPlugin;
}

/// The angle in degrees that rotates a quad's +y to the direction of motion in the x-y plane.
float path_angle(Vector3 direction, const StepValues& values, const SmokeInstance& instance);

}  // namespace tovu
