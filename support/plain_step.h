// Plain version of one step of the live particles: one particle after the other, along the links. The plug-in's step
// must give the same results to the bit.
#pragma once

#include <cmath>

#include "instance/smoke_instance.h"
#include "math/matrix.h"
#include "math/random.h"
#include "particles/particle_motion.h"
#include "particles/pool.h"
#include "particles/step_values.h"

namespace plain {

using tovu::SmokeInstance;
using tovu::StepValues;

inline Vector3 image_wind(const SmokeInstance& instance, float x, float y) {
    const tovu::ParameterSlots& p = instance.parameters;
    const tovu::PixelBytes pixel = tovu::sample3(tovu::open_image(instance.wind_source), x, y);
    const float strength = static_cast<float>(pixel.channel[0] / 255.0) * tovu::param::wind_force(p);
    tovu::Matrix4 turn;
    tovu::rotate_x(turn, static_cast<float>(pixel.channel[1] / 255.0) * 360.0f);
    tovu::rotate_z(turn, static_cast<float>(pixel.channel[2] / 255.0) * 360.0f);
    const Vector3 wind = tovu::transform(turn, {strength, 0, 0});
    return tovu::param::reference(p) == tovu::kReferenceWorld ? tovu::scaled(wind, instance.abs_scale) : wind;
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
    const bool outside = type == tovu::kSpawnContainer &&
                         !tovu::contains(tovu::open_inside_test(instance.container_source, nullptr), p.position);
    if (!outside && !(instance.consumer_attached && p.released)) return;
    p.life *= k;
    p.age *= k;
    p.accelerated = 1;
}

// Clamps the index to the table; 0 / 0 gives the last entry.
inline int32_t table_index(float age, float entries, float life) {
    const float index = age * entries / life;
    if (index >= entries || std::isnan(index)) return static_cast<int32_t>(entries);
    return index > 0 ? static_cast<int32_t>(index) : 0;
}

inline void store_look(const SmokeInstance& instance, Particle& p) {
    if (tovu::param::use_array(instance.parameters)) return;
    if (!(instance.consumer_attached && instance.consumer_owns_colour)) {
        const uint8_t* rgb = instance.color_table.rgb[table_index(p.age, 1024.0f, p.life)];
        for (int k = 0; k < 3; ++k) p.color[k] = rgb[k];
    }
    p.alpha = instance.alpha_table.alpha[table_index(p.age, 512.0f, p.life)] * 255.0f;
}

inline float path_angle(const SmokeInstance& instance, Vector3 d) {
    if (instance.draw_mode == tovu::kDrawLocalBillboard) d = tovu::transform(instance.rotation_scale_matrix, d);
    d.z = 0;
    tovu::normalize(d);
    if (d.x < -1) d.x = -1;
    if (d.x > 1) d.x = 1;
    const bool upright = -1.1920928955078125e-07f < d.x && d.x < 1.1920928955078125e-07f;
    const float a = upright ? 0 : static_cast<float>(std::asin(static_cast<double>(d.x)));
    return static_cast<float>(-static_cast<double>(d.y < 0 ? 3.1415927f - a : a) * 180 / 3.141592653589793);
}

/// Moves the particle and returns the wind at its position, in units per frame.
inline Vector3 displace(const SmokeInstance& instance, Particle& p, const StepValues& values) {
    tovu::operator+=(p.position, p.velocity);
    const Vector3 t = values.turbulence;
    if (values.turbulent_x) p.position.x += tovu::random_up_to(t.x) - t.x / 2;
    if (values.turbulent_y) p.position.y += tovu::random_up_to(t.y) - t.y / 2;
    if (values.turbulent_z) p.position.z += tovu::random_up_to(t.z) - t.z / 2;
    Vector3 wind_step = values.wind_step;
    if (values.wind_from_image)
        wind_step = tovu::operator*(image_wind(instance, p.position.x, p.position.y), values.time_step);
    if (values.wind_active) tovu::operator+=(p.position, wind_step);
    if (values.gravity_active) p.velocity.y += values.gravity_step;
    if (values.drag != 1) tovu::operator*=(p.velocity, values.drag);
    return wind_step;
}

/// Like tovu::move_particles, but does not update the array that mirrors the links.
inline tovu::Bounds move_particles(SmokeInstance& instance) {
    StepValues values;
    tovu::WindAngles spare_angles;
    tovu::set_step_values(values, instance, spare_angles);
    tovu::Bounds bounds;
    for (Particle *p = instance.active_head, *next = nullptr; p != nullptr; p = next) {
        next = p->next;
        if (instance.consumer_attached && !p->claimed && !p->released) continue;
        p->age += values.time_step;
        if (p->age > p->life) {
            tovu::move_to_inactive(instance, *p);
            continue;
        }
        accelerate_death(instance, *p);
        store_look(instance, *p);
        const Vector3 wind_step = displace(instance, *p, values);
        p->rotation += p->rotation_step;
        p->path_angle = values.follow_path ? path_angle(instance, tovu::operator+(p->velocity, wind_step)) : 0;
        p->size_x += p->size_step_x;
        p->size_y += p->size_step_y;
        tovu::widen(bounds, p->position);
    }
    return bounds;
}

}  // namespace plain
