#include "particle_motion.h"

#include "../math/random.h"
#include "active_array.h"
#include "pool.h"

namespace tovu {
namespace {

/// What the walk depends on and no particle changes.
struct StepValues {
    float time_step;    // seconds
    Vector3 wind_step;  // units per frame, added to the position
    bool wind_active;
    bool wind_from_image;
    float gravity_step;  // units per frame, added to velocity.y
    bool gravity_active;
    float drag;          // velocity factor per frame; exactly 1 means none
    Vector3 turbulence;  // range of the random displacement, units per frame
    Vector3 half_turbulence;
    bool turbulent_x;
    bool turbulent_y;
    bool turbulent_z;
    bool consumer;     // attached: only claimed or released particles take part
    bool store_alpha;  // the drawing that reads the record needs it; the arrays look the tables up themselves
    bool store_color;
    bool follow_path;
    bool path_in_world;  // the path's direction is seen through rotation_scale_matrix
    bool accelerate;     // Death Acceleration is below 100
    float life_factor;   // share of the remaining life that it leaves
    SpawnType spawn_type;
    WindImage wind_image;
    InsideTest inside;
    ImageReader mask;
};

void set_wind(StepValues& values, const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    values.wind_step = {0, 0, 0};
    values.wind_from_image = param::use_wind_image(p);
    values.wind_active = values.wind_from_image || param::wind_force(p) != 0.0f;
    if (values.wind_active && !values.wind_from_image)
        values.wind_step = global_wind(instance) * static_cast<float>(instance.time_step);
}

void set_forces(StepValues& values, const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    const double dt = instance.time_step;
    const Vector3 s = instance.abs_scale;
    values.drag = 1.0f - param::air_resistance(p) / 1000.0f;
    const float gravity = param::gravity(p);
    values.gravity_active = gravity != 0.0f;
    values.gravity_step = static_cast<float>(-static_cast<double>(gravity) * dt);
    if (param::reference(p) == kReferenceWorld) values.gravity_step *= s.y;
    const Vector3 amount{param::turbulence_x(p), param::turbulence_y(p), param::turbulence_z(p)};
    values.turbulent_x = amount.x != 0.0f;
    values.turbulent_y = amount.y != 0.0f;
    values.turbulent_z = amount.z != 0.0f;
    const auto range = [dt](float turbulence, float scale) {
        return static_cast<float>(dt * static_cast<double>(turbulence) * 10.0 * static_cast<double>(scale));
    };
    values.turbulence = {range(amount.x, s.x), range(amount.y, s.y), range(amount.z, s.z)};
    values.half_turbulence = values.turbulence * 0.5f;
}

void set_life_rules(StepValues& values, const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    values.consumer = instance.consumer_attached != 0;
    values.store_alpha = !param::use_array(p);
    values.store_color = values.store_alpha && !(values.consumer && instance.consumer_owns_colour);
    values.follow_path = param::rot_follow_path(p);
    values.path_in_world = instance.draw_mode == 1;
    const float life_time_scale = param::life_time_scale(p);
    values.accelerate = life_time_scale < 100.0f;
    values.life_factor = life_time_scale / 100.0f;
    values.spawn_type = param::spawn_type(p);
}

// Worked out once per instance; into `spare` at every step where memory ran out.
const WindAngles* wind_angles(SpeedUps* speed_ups, WindAngles& spare) {
    if (speed_ups == nullptr) {
        fill_wind_angles(spare);
        return &spare;
    }
    if (!speed_ups->wind_angles_filled) fill_wind_angles(speed_ups->wind_angles);
    speed_ups->wind_angles_filled = true;
    return &speed_ups->wind_angles;
}

// Whatever has to be asked of the host or looked up is opened once for the walk, and only if a particle can need it.
void open_sources(StepValues& values, SmokeInstance& instance, WindAngles& spare_angles) {
    const bool any = instance.active_head != nullptr;
    SpeedUps* speed_ups = instance.speed_ups;
    if (any && values.accelerate && values.spawn_type == kSpawnContainer)
        values.inside =
            open_inside_test(instance.container_source, speed_ups != nullptr ? &speed_ups->outline_index : nullptr);
    if (any && values.accelerate && values.spawn_type == kSpawnImage)
        values.mask = open_image(instance.spawn_image_source);
    if (any && values.wind_from_image) {
        const ParameterSlots& p = instance.parameters;
        const bool world = param::reference(p) == kReferenceWorld;
        values.wind_image = {open_image(instance.wind_source), wind_angles(speed_ups, spare_angles),
                             param::wind_force(p), world ? instance.abs_scale : Vector3{1, 1, 1}};
    }
}

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

void store_look(Particle& p, const StepValues& values, const SmokeInstance& instance) {
    const int32_t k = color_index(p.age, p.life);
    if (values.store_color) {
        const uint8_t* rgb = instance.color_table.rgb[k];
        p.color[0] = rgb[0];
        p.color[1] = rgb[1];
        p.color[2] = rgb[2];
    }
    p.alpha = instance.alpha_table.alpha[alpha_index(k)] * 255.0f;
}

void displace(Particle& p, StepValues& values) {
    p.position += p.velocity;
    if (values.turbulent_x) p.position.x += random_up_to(values.turbulence.x) - values.half_turbulence.x;
    if (values.turbulent_y) p.position.y += random_up_to(values.turbulence.y) - values.half_turbulence.y;
    if (values.turbulent_z) p.position.z += random_up_to(values.turbulence.z) - values.half_turbulence.z;
    if (values.wind_from_image)
        values.wind_step = image_wind(values.wind_image, p.position.x, p.position.y) * values.time_step;
    if (values.wind_active) p.position += values.wind_step;
    if (values.gravity_active) p.velocity.y += values.gravity_step;
    if (values.drag != 1.0f) p.velocity *= values.drag;
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

float path_angle(const Particle& p, const StepValues& values, const SmokeInstance& instance) {
    Vector3 d = p.velocity + values.wind_step;
    if (values.path_in_world) d = transform(instance.rotation_scale_matrix, d);
    d.z = 0.0f;
    normalize(d);
    return static_cast<float>(-static_cast<double>(direction_angle(d)) * 180.0 / 3.141592653589793);
}

/// What a step did with a particle.
enum class Fate { kLives, kDied };

Fate step_particle(Particle& p, StepValues& values, const SmokeInstance& instance, Bounds& bounds) {
    if (values.consumer && !p.claimed && !p.released) return Fate::kLives;
    p.age += values.time_step;
    if (p.age > p.life) return Fate::kDied;
    if (values.accelerate && !p.accelerated) accelerate_death(p, values);
    if (values.store_alpha) store_look(p, values, instance);
    displace(p, values);
    p.rotation += p.rotation_step;
    p.path_angle = values.follow_path ? path_angle(p, values, instance) : 0.0f;
    p.size_x += p.size_step_x;
    p.size_y += p.size_step_y;
    widen(bounds, p.position);
    return Fate::kLives;
}

void walk_links(SmokeInstance& instance, StepValues& values, Bounds& bounds) {
    for (Particle* p = instance.active_head; p != nullptr;) {
        Particle* next = p->next;  // read first: retiring p relinks it into the inactive list
        if (step_particle(*p, values, instance, bounds) == Fate::kDied) move_to_inactive(instance, *p);
        p = next;
    }
}

// The same walk through the side array, which is closed up toward its end as particles die.
void walk_array(SmokeInstance& instance, ActiveArray& active, StepValues& values, Bounds& bounds) {
    int32_t first_survivor = active.end;
    for (int32_t i = active.end - 1; i >= active.begin; --i) {
        const int32_t ahead = i - kFetchAhead;
        fetch_ahead(active.records[ahead > active.begin ? ahead : active.begin]);
        Particle* p = active.records[i];
        if (step_particle(*p, values, instance, bounds) == Fate::kDied)
            move_to_inactive(instance, *p);
        else
            active.records[--first_survivor] = p;
    }
    active.begin = first_survivor;
}

}  // namespace

Bounds move_particles(SmokeInstance& instance) {
    StepValues values{};
    values.time_step = static_cast<float>(instance.time_step);
    set_wind(values, instance);
    set_forces(values, instance);
    set_life_rules(values, instance);
    WindAngles spare_angles;
    open_sources(values, instance, spare_angles);
    Bounds bounds;
    if (ActiveArray* active = current_active_array(instance))
        walk_array(instance, *active, values, bounds);
    else
        walk_links(instance, values, bounds);
    return bounds;
}

}  // namespace tovu
