#include "emission.h"

#include "../math/random.h"
#include "../math/trigonometry.h"
#include "../services/host_queries.h"
#include "active_array.h"
#include "pool.h"
#include "spawn_search.h"

namespace tovu {
namespace {

constexpr float kPi = 3.1415927f;
constexpr float kHalfPi = 1.5707964f;

/// The range base ± percent of a uniform draw.
struct Spread {
    float low;
    float range;
};

Spread spread_of(float base, float percent) {
    const float half = base * percent / 100.0f;
    return {base - half, 2.0f * half};
}

// Draws no random value if the range is 0.
float drawn(Spread spread) {
    return spread.range == 0.0f ? spread.low : spread.low + random_up_to(spread.range);
}

// Rotations: a spread in degrees, centred on the base.
float drawn_around(float base, float spread) {
    return spread == 0.0f ? base : base + random_up_to(spread) - spread / 2.0f;
}

/// Birth and death size along one axis. Both use the same random value, so a particle that is born large dies large.
struct SizeSpread {
    Spread birth;
    Spread death;
};

/// Values that all births of one call share.
struct EmissionSetup {
    bool world;
    Vector3 world_scale{1, 1, 1};
    Matrix4 direction;  // from the emission cone to the container, or under World to the world without translation
    Matrix4 placement;  // under World: container to world
    Matrix4 twist;
    bool twisted;
    bool align_to_centre;
    float across;  // opening angles, radians
    float swing;
    Spread life;
    Spread speed;
    SizeSpread size_x;
    SizeSpread size_y;
    float rot_start;
    float rot_start_spread;
    float rot_change;
    float rot_change_spread;
    float rate_factor;  // steps per second
    SpawnType spawn_type;
    Vector3 range;
    float offset_fraction;
};

float radians_of(float degrees) {
    return degrees / 180.0f * kPi;
}

void set_up_frames(EmissionSetup& setup, const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    setup.world = param::reference(p) == kReferenceWorld;
    if (setup.world) {
        setup.world_scale = host::absolute_scaling(instance.container_handle);
        rotate(setup.direction, host::absolute_rotation(instance.container_handle));
        scale(setup.direction, setup.world_scale);
        setup.placement = host::transformation_matrix(instance.container_handle);
    }
    rotate_x(setup.direction, param::initial_rot_x(p));
    rotate_z(setup.direction, param::initial_rot_z(p));
    const float twist_degrees = param::opening_angle_twist(p);
    setup.twisted = twist_degrees != 0.0f;
    rotate(setup.twist, twist_degrees, {0, 1, 0});
}

void set_up_draws(EmissionSetup& setup, const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    setup.align_to_centre = param::initial_align_to_spawn_center(p);
    setup.across = radians_of(param::opening_angle_x(p));
    setup.swing = radians_of(param::opening_angle_z(p));
    setup.life = spread_of(param::life_time(p), param::life_time_spread(p));
    setup.speed = spread_of(param::initial_speed(p), param::initial_speed_spread(p));
    setup.size_x = {spread_of(param::size_birth_x(p), param::size_birth_spread_x(p)),
                    spread_of(param::size_death_x(p), param::size_death_spread_x(p))};
    setup.size_y = {spread_of(param::size_birth_y(p), param::size_birth_spread_y(p)),
                    spread_of(param::size_death_y(p), param::size_death_spread_y(p))};
    setup.rot_start = param::rot_start(p);
    setup.rot_start_spread = param::rot_start_spread(p);
    setup.rot_change = param::rot_change(p);
    setup.rot_change_spread = param::rot_change_spread(p);
    setup.rate_factor = static_cast<float>(1.0 / instance.time_step);
    setup.spawn_type = param::spawn_type(p);
    setup.range = {param::spawn_range_x(p), param::spawn_range_y(p), param::spawn_range_z(p)};
    setup.offset_fraction = param::spawn_offset(p) / 100.0f;
}

float in_box(float range) {
    return range == 0.0f ? 0.0f : random_up_to(range) - range / 2.0f;
}

float in_unit_box(float range) {
    return range == 0.0f ? 0.0f : random_up_to(1.0f) - 0.5f;
}

// Separate statements fix the order of the draws (x, y, z), which is part of the result.
Vector3 box_position(Vector3 range) {
    const float x = in_box(range.x);
    const float y = in_box(range.y);
    const float z = in_box(range.z);
    return {x, y, z};
}

Vector3 ellipsoid_position(Vector3 range, float offset_fraction) {
    const float x = in_unit_box(range.x);
    const float y = in_unit_box(range.y);
    const float z = in_unit_box(range.z);
    Vector3 direction{x, y, z};
    if (!(normalize(direction) > 0.0f)) return {0, 0, 0};
    return scaled(direction * ((1.0f - random_up_to(offset_fraction)) / 2.0f), range);
}

bool spawn_position(SmokeInstance& instance, const EmissionSetup& setup, SpawnSearch& search, Vector3& position) {
    switch (setup.spawn_type) {
        case kSpawnSphere:
            position = ellipsoid_position(setup.range, setup.offset_fraction);
            return true;
        case kSpawnContainer:
            return pick_point(instance, search, position);
        case kSpawnImage:
            return pick_lit_point(search, setup.range.z, position);
        default:
            position = box_position(setup.range);
            return true;
    }
}

Vector3 emission_direction(const EmissionSetup& setup, Vector3 position) {
    if (setup.align_to_centre) {
        normalize(position);
        return position;
    }
    Vector3 direction = cone_direction(setup.across, setup.swing);
    if (setup.twisted) direction = transform(setup.twist, direction);
    return transform(setup.direction, direction);
}

float size_step(SizeSpread size, float r, float birth_size, float frames) {
    return (size.death.low + r * size.death.range - birth_size) / frames;
}

void give_size(Particle& particle, const EmissionSetup& setup, double time_step) {
    const float r = random_up_to(1.0f);
    particle.size_x = setup.size_x.birth.low + r * setup.size_x.birth.range;
    particle.size_y = setup.size_y.birth.low + r * setup.size_y.birth.range;
    particle.size_step_x = particle.size_step_y = 0.0f;
    if (time_step == 0.0) return;  // no time passes: the size does not change
    const auto frames = static_cast<float>(static_cast<double>(particle.life) / time_step + 1.0);
    particle.size_step_x = size_step(setup.size_x, r, particle.size_x, frames);
    particle.size_step_y = size_step(setup.size_y, r, particle.size_y, frames);
}

void place_in_world(Particle& particle, const EmissionSetup& setup) {
    particle.position = transform(setup.placement, particle.position);
    particle.size_x *= setup.world_scale.x;
    particle.size_step_x *= setup.world_scale.x;
    particle.size_y *= setup.world_scale.y;
    particle.size_step_y *= setup.world_scale.y;
}

void fill_record(Particle& particle, const EmissionSetup& setup, const SmokeInstance& instance) {
    particle.age = 0.0f;
    particle.life = drawn(setup.life);
    const Vector3 direction = emission_direction(setup, particle.position);
    const float speed = drawn(setup.speed);
    particle.velocity = direction * static_cast<float>(static_cast<double>(speed) * instance.time_step);
    particle.alpha = instance.alpha_table.alpha[0] * 255.0f;
    give_size(particle, setup, instance.time_step);
    particle.rotation = drawn_around(setup.rot_start, setup.rot_start_spread);
    const float change = drawn_around(setup.rot_change, setup.rot_change_spread);
    particle.rotation_step = change / setup.rate_factor;
    if (setup.world) place_in_world(particle, setup);
}

enum class Birth { kMade, kRefused, kCutShort };

// Without a spawn point the record returns to the pool but is still filled, since the draws for it are part of the
// sequence. A spawn plug-in can cause a reset or a detach, which returns all live particles, this one included, to the
// pool: the call ends then.
Birth bring_to_life(SmokeInstance& instance, const EmissionSetup& setup, SpawnSearch& search, Particle& particle) {
    move_to_active(instance, particle);
    particle.accelerated = 0;
    particle.claimed = 0;
    particle.released = 0;
    const bool found = spawn_position(instance, setup, search, particle.position);
    if (instance.active_head == nullptr) return Birth::kCutShort;
    if (found) {
        append_youngest(instance, particle);
    } else {
        move_to_inactive(instance, particle);
        particle.position = {0, 0, 0};
    }
    fill_record(particle, setup, instance);
    return found ? Birth::kMade : Birth::kRefused;
}

bool emit_with(SmokeInstance& instance, const EmissionSetup& setup, SpawnSearch& search, int32_t count) {
    int32_t refused_in_a_row = 0;
    for (int32_t made = 0; made < count; ++made) {
        Particle* particle = instance.inactive_head;
        if (particle == nullptr) return false;
        const Birth birth = bring_to_life(instance, setup, search, *particle);
        if (birth == Birth::kCutShort) return false;
        refused_in_a_row = birth == Birth::kMade ? 0 : refused_in_a_row + 1;
        if (refused_in_a_row == kMaxRefusedInARow) return false;
    }
    return true;
}

}  // namespace

bool emit_particles(SmokeInstance& instance, int32_t count) {
    if (count < 1) return false;
    SpawnSearch search;
    if (!begin_search(instance, search, count)) return false;
    EmissionSetup setup;
    set_up_frames(setup, instance);
    set_up_draws(setup, instance);
    instance.emission_vector = transform(setup.direction, {0, param::initial_speed(instance.parameters), 0});
    return emit_with(instance, setup, search, count);
}

Vector3 cone_direction(float across, float swing) {
    float theta = kHalfPi;
    if (across != 0.0f) {
        const float half_width = across / kPi;
        const float cosine = random_up_to(2.0f * half_width) - half_width;
        theta = arc_cosine(cosine > 1.0f ? 1.0f : cosine > -1.0f ? cosine : -1.0f);  // NaN becomes -1
    }
    const float phi = swing == 0.0f ? 0.0f : random_up_to(swing) - swing / 2.0f;
    const float sine = sine_of(theta);
    return {-cosine_of(theta), sine * cosine_of(phi), sine * sine_of(phi)};
}

}  // namespace tovu
