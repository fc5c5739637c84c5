#include "particle_motion.h"

#include <cstring>

#include "../math/random.h"
#include "active_array.h"
#include "pool.h"
#include "step_values.h"

namespace tovu {
namespace {

constexpr int32_t kRecordsPerBlock = 32;  // two blocks, this and the next, fit the first-level cache with room to spare

/// Some particles in list order, on their way through the steps of a frame together: each step then is a short loop
/// with its values in registers, and what memory and random numbers take is out of the way of the arithmetic.
struct Block {
    Particle* records[kRecordsPerBlock];
    int32_t count;
    float age[kRecordsPerBlock];
    float life[kRecordsPerBlock];
    float turbulence[3][kRecordsPerBlock];  // displacement along x, y, z
    Vector3 wind_step[kRecordsPerBlock];    // kept for the path angle
};

void cut_life_keeping_phase(Particle& p, float factor) {
    p.life *= factor;
    p.age *= factor;
    p.accelerated = 1;
}

// Once per particle, and only while Death Acceleration is below 100. Outside its spawn shape a particle keeps the phase
// of its life, so that colour and opacity go on smoothly; off the mask of an image it keeps its age and jumps ahead.
void accelerate_death(Particle& p, const StepValues& values) {
    if (values.spawn_type == kSpawnImage) {
        if (sample1(values.mask, p.position.x, p.position.y) != 0.0f) return;
        p.life = (p.life - p.age) * values.life_factor + p.age;
        p.accelerated = 1;
        return;
    }
    const bool outside = values.spawn_type == kSpawnContainer && !contains(values.inside, p.position);
    if (outside || (values.consumer && p.released)) cut_life_keeping_phase(p, values.life_factor);
}

/// Ages a particle that takes part in the step. Returns false when it died.
inline bool grow_older(Particle& p, const StepValues& values) {
    p.age += values.time_step;
    if (p.age > p.life) return false;
    if (values.accelerate && !p.accelerated) accelerate_death(p, values);
    return true;
}

inline bool takes_part(const Particle& p, const StepValues& values) {
    return !values.consumer || p.claimed || p.released;
}

inline void add(Block& block, Particle& p) {
    block.age[block.count] = p.age;
    block.life[block.count] = p.life;
    block.records[block.count++] = &p;
}

// The draws of each particle follow those of the one before; only then are they turned into lengths.
void draw_turbulence(Block& block, const StepValues& values) {
    int32_t drawn[3][kRecordsPerBlock];
    for (int32_t i = 0; i < block.count; ++i) {
        if (values.turbulent_x) drawn[0][i] = random_15_bits();
        if (values.turbulent_y) drawn[1][i] = random_15_bits();
        if (values.turbulent_z) drawn[2][i] = random_15_bits();
    }
    const auto lengths = [&block](float* length, const int32_t* r, bool turbulent, float range, float half) {
        // Adding -0 changes no number, not even 0.
        for (int32_t i = 0; i < block.count; ++i) length[i] = turbulent ? random_share(r[i], range) - half : -0.0f;
    };
    lengths(block.turbulence[0], drawn[0], values.turbulent_x, values.turbulence.x, values.half_turbulence.x);
    lengths(block.turbulence[1], drawn[1], values.turbulent_y, values.turbulence.y, values.half_turbulence.y);
    lengths(block.turbulence[2], drawn[2], values.turbulent_z, values.turbulence.z, values.half_turbulence.z);
}

void store_looks(const Block& block, const StepValues& values, const SmokeInstance& instance) {
    int32_t index[kRecordsPerBlock];
    for (int32_t i = 0; i < block.count; ++i) index[i] = color_index(block.age[i], block.life[i]);
    for (int32_t i = 0; i < block.count; ++i) {
        Particle& p = *block.records[i];
        if (values.store_color) std::memcpy(p.color, instance.color_table.rgb[index[i]], sizeof p.color);
        p.alpha = instance.alpha_table.alpha[alpha_index(index[i])] * 255.0f;
    }
}

/// Moves, turns and grows the particles of a block, and asks for the records of the next one meanwhile.
template <bool turbulent>
void move_block(Block& block, const StepValues& values, Bounds& bounds, Particle* const* next, int32_t next_count) {
    Bounds widened = bounds;  // stays in registers
    for (int32_t i = 0; i < block.count; ++i) {
        if (i < next_count) fetch_ahead(next[-i]);
        Particle& p = *block.records[i];
        Vector3 at = p.position + p.velocity;
        if constexpr (turbulent) at += {block.turbulence[0][i], block.turbulence[1][i], block.turbulence[2][i]};
        Vector3 wind_step = values.wind_step;
        if (values.wind_from_image) wind_step = image_wind(values.wind_image, at.x, at.y) * values.time_step;
        if (values.wind_active) at += wind_step;
        if (values.follow_path) block.wind_step[i] = wind_step;
        p.position = at;
        widen(widened, at);
        Vector3 velocity = p.velocity;
        if (values.gravity_active) velocity.y += values.gravity_step;
        if (values.drag != 1.0f) velocity *= values.drag;
        p.velocity = velocity;
        p.rotation += p.rotation_step;
        p.path_angle = 0.0f;
        p.size_x += p.size_step_x;
        p.size_y += p.size_step_y;
    }
    bounds = widened;
}

// The angle between +y and a direction of length 1 in the x-y plane, radians, clockwise positive.
float direction_angle(Vector3 d) {
    constexpr float kTiny = 1.1920928955078125e-07f;
    constexpr float kHalfTurn = 3.1415927f;
    const float across = d.x < -1.0f ? -1.0f : d.x > 1.0f ? 1.0f : d.x;
    if (-kTiny < across && across < kTiny) return d.y < 0.0f ? kHalfTurn : 0.0f;
    const float angle = std::asin(across);
    return d.y < 0.0f ? kHalfTurn - angle : angle;
}

float path_angle(Vector3 d, const StepValues& values, const SmokeInstance& instance) {
    if (values.path_in_world) d = transform(instance.rotation_scale_matrix, d);
    d.z = 0.0f;
    normalize(d);
    return static_cast<float>(-static_cast<double>(direction_angle(d)) * 180.0 / 3.141592653589793);
}

void follow_paths(const Block& block, const StepValues& values, const SmokeInstance& instance) {
    for (int32_t i = 0; i < block.count; ++i) {
        Particle& p = *block.records[i];
        p.path_angle = path_angle(p.velocity + block.wind_step[i], values, instance);
    }
}

/// What is left of the step once the particles of a block are known to be alive. next: the records of the next block,
/// the first one last; none where next_count is 0.
void step_block(Block& block, const StepValues& values, const SmokeInstance& instance, Bounds& bounds,
                Particle* const* next, int32_t next_count) {
    if (values.store_alpha) store_looks(block, values, instance);
    if (values.turbulent_x || values.turbulent_y || values.turbulent_z) {
        draw_turbulence(block, values);
        move_block<true>(block, values, bounds, next, next_count);
    } else {
        move_block<false>(block, values, bounds, next, next_count);
    }
    if (values.follow_path) follow_paths(block, values, instance);
}

// A plug-in that is asked whether a particle is inside may draw random numbers itself: between those of the particle
// before and its own.
int32_t block_size(const StepValues& values) {
    const bool asks_plugin =
        values.accelerate && values.spawn_type == kSpawnContainer && values.inside.way == InsideTest::kAskPlugin;
    return asks_plugin ? 1 : kRecordsPerBlock;
}

void walk_links(SmokeInstance& instance, const StepValues& values, Bounds& bounds) {
    const int32_t most = block_size(values);
    Block block;
    for (Particle* p = instance.active_head; p != nullptr;) {
        block.count = 0;
        while (p != nullptr && block.count < most) {
            Particle* next = p->next;  // read first: retiring p relinks it into the inactive list
            if (takes_part(*p, values)) {
                if (grow_older(*p, values))
                    add(block, *p);
                else
                    move_to_inactive(instance, *p);
            }
            p = next;
        }
        step_block(block, values, instance, bounds, nullptr, 0);
    }
}

// The same walk through the side array, which is closed up toward its end as particles die.
void walk_array(SmokeInstance& instance, ActiveArray& active, const StepValues& values, Bounds& bounds) {
    const int32_t most = block_size(values);
    int32_t first_survivor = active.end;
    Block block;
    for (int32_t end = active.end; end > active.begin;) {
        const int32_t begin = end - active.begin > most ? end - most : active.begin;
        block.count = 0;
        for (int32_t i = end - 1; i >= begin; --i) {
            Particle* p = active.records[i];
            if (takes_part(*p, values)) {
                if (!grow_older(*p, values)) {
                    move_to_inactive(instance, *p);
                    continue;
                }
                add(block, *p);
            }
            active.records[--first_survivor] = p;
        }
        const int32_t left = begin - active.begin;
        step_block(block, values, instance, bounds, active.records + begin - 1, left < most ? left : most);
        end = begin;
    }
    active.begin = first_survivor;
}

}  // namespace

Bounds move_particles(SmokeInstance& instance) {
    StepValues values;
    WindAngles spare_angles;
    set_step_values(values, instance, spare_angles);
    Bounds bounds;
    if (ActiveArray* active = current_active_array(instance))
        walk_array(instance, *active, values, bounds);
    else
        walk_links(instance, values, bounds);
    return bounds;
}

}  // namespace tovu
