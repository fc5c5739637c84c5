// What one step does to the live particles, written down as its rules state it: one particle after the other, along the
// links. The plug-in's own way through the list must come to the same, to the bit.
#pragma once

#include <cmath>

#include "math/matrix.h"
#include "math/polygon.h"
#include "math/random.h"
#include "particles/particle_motion.h"
#include "particles/pool.h"
#include "smoke_instance.h"

namespace plain {

using tovu::SmokeInstance;

/// What is the same for all particles; wind and its flag go on from particle to particle where an image gives them.
struct StepLocals {
    float dt;
    Vector3 wind_step;
    bool wind_active;
    float drag;
    float gravity_step;
    Vector3 turbulence;
};

inline Vector3 wind_field(const SmokeInstance& instance, bool use_image, float x, float y) {
    const tovu::ParameterSlots& p = instance.parameters;
    float strength = tovu::param::wind_force(p);
    float angle_x = tovu::param::wind_rot_x(p);
    float angle_z = tovu::param::wind_rot_z(p);
    if (use_image) {
        const tovu::PixelBytes pixel = tovu::sample3(tovu::open_image(instance.wind_source), x, y);
        strength = static_cast<float>(pixel.channel[0] / 255.0) * strength;
        angle_x = static_cast<float>(pixel.channel[1] / 255.0) * 360.0f;
        angle_z = static_cast<float>(pixel.channel[2] / 255.0) * 360.0f;
    }
    tovu::Matrix4 turn;
    tovu::rotate_x(turn, angle_x);
    tovu::rotate_z(turn, angle_z);
    const Vector3 wind = tovu::transform(turn, {strength, 0, 0});
    const bool world = tovu::param::reference(p) == tovu::kReferenceWorld;
    return world ? tovu::scaled(wind, instance.abs_scale) : wind;
}

inline StepLocals step_locals(const SmokeInstance& instance) {
    const tovu::ParameterSlots& p = instance.parameters;
    const double dt = instance.time_step;
    const bool world = tovu::param::reference(p) == tovu::kReferenceWorld;
    StepLocals locals{};
    locals.dt = static_cast<float>(dt);
    if (!tovu::param::use_wind_image(p) && tovu::param::wind_force(p) != 0) {
        locals.wind_step = tovu::operator*(wind_field(instance, false, 0, 0), locals.dt);
        locals.wind_active = true;
    }
    locals.drag = 1.0f - tovu::param::air_resistance(p) / 1000.0f;
    locals.gravity_step = static_cast<float>(-static_cast<double>(tovu::param::gravity(p)) * dt);
    if (world) locals.gravity_step *= instance.abs_scale.y;
    const auto amplitude = [dt](float turbulence, float scale) {
        return static_cast<float>(dt * static_cast<double>(turbulence) * 10.0 * static_cast<double>(scale));
    };
    locals.turbulence = {amplitude(tovu::param::turbulence_x(p), instance.abs_scale.x),
                         amplitude(tovu::param::turbulence_y(p), instance.abs_scale.y),
                         amplitude(tovu::param::turbulence_z(p), instance.abs_scale.z)};
    return locals;
}

inline bool contains(const SmokeInstance& instance, Vector3 point) {
    const tovu::ContainerSpawnSource& source = instance.container_source;
    if (!tovu::is_valid(source)) return false;
    if (source.plugin_mode) return tovu::ask_is_inside(source, point);
    for (int32_t i = 0; i < source.outline_count; ++i) {
        const auto inside = source.ref_plane == 1 ? tovu::point_in_polygon_xz : tovu::point_in_polygon_xy;
        if (inside(source.outline_sizes[i], source.outline_starts[i], point)) return true;
    }
    return false;
}

inline void accelerate_death(const SmokeInstance& instance, Particle& p) {
    const tovu::ParameterSlots& slots = instance.parameters;
    const float scale = tovu::param::life_time_scale(slots);
    if (p.accelerated || !(scale < 100)) return;
    const float k = scale / 100.0f;
    const tovu::SpawnType type = tovu::param::spawn_type(slots);
    if (type == tovu::kSpawnImage) {
        if (tovu::sample1(tovu::open_image(instance.spawn_image_source), p.position.x, p.position.y) != 0) return;
        p.life = (p.life - p.age) * k + p.age;
        p.accelerated = 1;
        return;
    }
    const bool outside = type == tovu::kSpawnContainer && !contains(instance, p.position);
    if (!outside && !(instance.consumer_attached && p.released)) return;
    p.life *= k;
    p.age *= k;
    p.accelerated = 1;
}

// The index is held to the table, and 0 / 0 reads its end.
inline int32_t table_index(float age, float entries, float life) {
    const float index = age * entries / life;
    return index >= entries || std::isnan(index) ? static_cast<int32_t>(entries)
           : index > 0                           ? static_cast<int32_t>(index)
                                                 : 0;
}

inline void store_look(const SmokeInstance& instance, Particle& p) {
    if (tovu::param::use_array(instance.parameters)) return;
    if (!(instance.consumer_attached && instance.consumer_owns_colour)) {
        const uint8_t* rgb = instance.color_table.rgb[table_index(p.age, 1024.0f, p.life)];
        for (int k = 0; k < 3; ++k) p.color[k] = rgb[k];
    }
    p.alpha = instance.alpha_table.alpha[table_index(p.age, 512.0f, p.life)] * 255.0f;
}

inline float path_angle(const SmokeInstance& instance, const Particle& p, Vector3 wind_step) {
    Vector3 d = tovu::operator+(p.velocity, wind_step);
    if (instance.draw_mode == 1) d = tovu::transform(instance.rotation_scale_matrix, d);
    d.z = 0;
    tovu::normalize(d);
    if (d.x < -1) d.x = -1;
    if (d.x > 1) d.x = 1;
    float a = 0;
    if (-1.1920928955078125e-07f < d.x && d.x < 1.1920928955078125e-07f)
        a = d.y < 0 ? 3.1415927f : 0;
    else
        a = d.y < 0 ? 3.1415927f - std::asin(d.x) : std::asin(d.x);
    return static_cast<float>(-static_cast<double>(a) * 180 / 3.141592653589793);
}

inline void displace(const SmokeInstance& instance, Particle& p, StepLocals& locals) {
    const tovu::ParameterSlots& slots = instance.parameters;
    tovu::operator+=(p.position, p.velocity);
    const Vector3 t = locals.turbulence;
    if (tovu::param::turbulence_x(slots) != 0) p.position.x += tovu::random_up_to(t.x) - t.x / 2;
    if (tovu::param::turbulence_y(slots) != 0) p.position.y += tovu::random_up_to(t.y) - t.y / 2;
    if (tovu::param::turbulence_z(slots) != 0) p.position.z += tovu::random_up_to(t.z) - t.z / 2;
    if (tovu::param::use_wind_image(slots)) {
        locals.wind_step = tovu::operator*(wind_field(instance, true, p.position.x, p.position.y), locals.dt);
        locals.wind_active = true;
    }
    if (locals.wind_active) tovu::operator+=(p.position, locals.wind_step);
    if (tovu::param::gravity(slots) != 0) p.velocity.y += locals.gravity_step;
    if (locals.drag != 1) tovu::operator*=(p.velocity, locals.drag);
}

/// As tovu::move_particles, except that an array of the live particles kept beside the links is not brought along.
inline tovu::Bounds move_particles(SmokeInstance& instance) {
    StepLocals locals = step_locals(instance);
    const bool follow_path = tovu::param::rot_follow_path(instance.parameters);
    tovu::Bounds bounds;
    for (Particle *p = instance.active_head, *next = nullptr; p != nullptr; p = next) {
        next = p->next;
        if (instance.consumer_attached && !p->claimed && !p->released) continue;
        p->age += locals.dt;
        if (p->age > p->life) {
            tovu::move_to_inactive(instance, *p);
            continue;
        }
        accelerate_death(instance, *p);
        store_look(instance, *p);
        displace(instance, *p, locals);
        p->rotation += p->rotation_step;
        p->path_angle = follow_path ? path_angle(instance, *p, locals.wind_step) : 0;
        p->size_x += p->size_step_x;
        p->size_y += p->size_step_y;
        tovu::widen(bounds, p->position);
    }
    return bounds;
}

}  // namespace plain
