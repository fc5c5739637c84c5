#include "particle_rules.h"

#include "../math/trigonometry.h"

namespace tovu {
namespace {

// Age and life shrink by the same factor: age / life stays, so colour and opacity do not jump.
void shorten_life_keeping_phase(Particle& p, float factor) {
    p.life *= factor;
    p.age *= factor;
    p.accelerated = 1;
}

// The age stays: colour and opacity jump ahead.
void shorten_life_keeping_age(Particle& p, float factor) {
    p.life = (p.life - p.age) * factor + p.age;
    p.accelerated = 1;
}

// The angle from +y to a direction of length 1 or 0 in the x-y plane, radians, clockwise positive.
float direction_angle(Vector3 d) {
    constexpr float kTiny = 1.1920928955078125e-07f;
    constexpr float kPi = 3.1415927f;
    const float x = d.x < -1.0f ? -1.0f : d.x > 1.0f ? 1.0f : d.x;
    if (-kTiny < x && x < kTiny) return d.y < 0.0f ? kPi : 0.0f;
    const float angle = arc_sine(x);
    return d.y < 0.0f ? kPi - angle : angle;
}

}  // namespace

void accelerate_death(Particle& p, const StepValues& values) {
    if (values.spawn_type == kSpawnImage) {
        if (sample1(values.mask, p.position.x, p.position.y) == 0.0f) shorten_life_keeping_age(p, values.life_factor);
        return;
    }
    const bool outside = values.spawn_type == kSpawnContainer && !contains(values.inside, p.position);
    if (outside || (values.consumer && p.released)) shorten_life_keeping_phase(p, values.life_factor);
}

float path_angle(Vector3 direction, const StepValues& values, const SmokeInstance& instance) {
    if (values.path_in_world) direction = transform(instance.rotation_scale_matrix, direction);
    direction.z = 0.0f;
    normalize(direction);
    return static_cast<float>(-static_cast<double>(direction_angle(direction)) * 180.0 / 3.141592653589793);
}

}  // namespace tovu
