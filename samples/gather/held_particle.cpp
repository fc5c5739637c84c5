#include "held_particle.h"

#include <algorithm>
#include <cmath>

namespace gather {
namespace {

// -1 to 1, the same for the same numbers. The mixing steps are the finaliser of MurmurHash3 (Appleby).
float noise(int32_t number, uint32_t salt) {
    uint32_t h = static_cast<uint32_t>(number) * 3 + salt;
    h = (h ^ h >> 16) * 0x85EBCA6Bu;
    h = (h ^ h >> 13) * 0xC2B2AE35u;
    h ^= h >> 16;
    return static_cast<float>(h >> 8) / 8388607.5f - 1;
}

Vector3 noise_vector(int32_t number, uint32_t salt) {
    return {noise(number, salt), noise(number, salt + 1), noise(number, salt + 2)};
}

// One axis of the spring: displacement per frame, from the one before. The damping is taken implicitly and the
// stiffness is bounded, so that no strength makes the particle overshoot more and more.
float sprung(float per_frame, float distance, float strength, float damping, float dt) {
    const float w = std::min(strength * dt, 1.0f);
    return (per_frame + w * w * distance) / (1 + 2 * damping * w);
}

// The smoke ages every particle by dt in each frame. One that is older than wanted grows younger again, three times as
// fast as it aged, and then stands still; its size goes back with its age.
void keep_young(Particle& p, float hold_phase, float dt) {
    const float over = p.age - hold_phase * p.life;
    if (!(over > 0)) return;
    const float back = std::min(over, 3 * dt);
    p.age -= back;
    p.size_x = std::max(p.size_x - p.size_step_x * back / dt, 0.0f);
    p.size_y = std::max(p.size_y - p.size_step_y * back / dt, 0.0f);
}

}  // namespace

void hold(Particle& p, int32_t number, const Place& place, float pull, const Slots& slots, float dt) {
    const float strength = param::strength(slots) * pull;
    const float damping = param::damping(slots) / 100;
    const float scatter = param::scatter(slots);
    const Vector3 off = noise_vector(number, 0);
    p.velocity.x = sprung(p.velocity.x, place.point.x + off.x * scatter - p.position.x, strength, damping, dt);
    p.velocity.y = sprung(p.velocity.y, place.point.y + off.y * scatter - p.position.y, strength, damping, dt);
    p.velocity.z = sprung(p.velocity.z, place.point.z + off.z * scatter - p.position.z, strength, damping, dt);
    keep_young(p, param::hold_phase(slots) / 100, dt);
}

void release(Particle& p, int32_t number, const Slots& slots, float dt) {
    drop(p);
    const Vector3 blow{param::blow_x(slots), param::blow_y(slots), param::blow_z(slots)};
    const float speed = std::sqrt(blow.x * blow.x + blow.y * blow.y + blow.z * blow.z);
    const float spread = speed * param::blow_spread(slots) / 100;
    const Vector3 off = noise_vector(number, 0x10000000);
    p.velocity.x += (blow.x + off.x * spread) * dt;
    p.velocity.y += (blow.y + off.y * spread) * dt;
    p.velocity.z += (blow.z + off.z * spread) * dt;
}

void drop(Particle& p) {
    p.claimed = 0;
    p.released = 1;
}

void colour(Particle& p, float pull, const Slots& slots, float dt) {
    const int32_t held[3] = {param::held_red(slots), param::held_green(slots), param::held_blue(slots)};
    const int32_t free[3] = {param::free_red(slots), param::free_green(slots), param::free_blue(slots)};
    float change[3];
    float farthest = 0;
    for (int i = 0; i < 3; ++i) {
        const float wanted = static_cast<float>(free[i]) + static_cast<float>(held[i] - free[i]) * pull;
        change[i] = wanted - static_cast<float>(p.color[i]);
        farthest = std::max(farthest, std::abs(change[i]));
    }
    // All three arrive together, so that no other tint shows on the way.
    const float seconds = param::colour_time(slots);
    const float most = seconds > dt ? std::max(255 * dt / seconds, 1.0f) : 255;
    const float part = farthest > most ? most / farthest : 1;
    for (int i = 0; i < 3; ++i)
        p.color[i] = static_cast<uint8_t>(std::lround(static_cast<float>(p.color[i]) + change[i] * part));
}

void colour_newborn(Particle& p, const Slots& slots) {
    p.color[0] = static_cast<uint8_t>(param::free_red(slots));
    p.color[1] = static_cast<uint8_t>(param::free_green(slots));
    p.color[2] = static_cast<uint8_t>(param::free_blue(slots));
}

}  // namespace gather
