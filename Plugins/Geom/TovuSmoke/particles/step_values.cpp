#include "step_values.h"

#include "instance_caches.h"

namespace tovu {
namespace {

Vector3 wind_scale(const SmokeInstance& instance) {
    return param::reference(instance.parameters) == kReferenceWorld ? instance.abs_scale : Vector3{1, 1, 1};
}

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

// Everything that an attach request changes.
void set_attachment(StepValues& values, const SmokeInstance& instance) {
    values.consumer = instance.consumer_attached != 0;
    values.store_color = values.store_alpha && !(values.consumer && instance.consumer_owns_colour);
    const float life_time_scale = param::life_time_scale(instance.parameters);
    values.accelerate = life_time_scale < 100.0f;
    values.life_factor = life_time_scale / 100.0f;
}

void set_life_rules(StepValues& values, const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    values.store_alpha = !param::use_array(p);
    values.follow_path = param::rot_follow_path(p);
    values.path_in_world = instance.draw_mode == kDrawLocalBillboard;
    values.spawn_type = param::spawn_type(p);
    set_attachment(values, instance);
}

// Filled once per instance. Without caches, `spare` is filled in every step.
const WindAngles* wind_angles(InstanceCaches* caches, WindAngles& spare) {
    if (caches == nullptr) {
        fill_wind_angles(spare);
        return &spare;
    }
    if (!caches->wind_angles_filled) fill_wind_angles(caches->wind_angles);
    caches->wind_angles_filled = true;
    return &caches->wind_angles;
}

// Host queries are made once per walk, and only for the sources that a particle can need.
void open_sources(StepValues& values, SmokeInstance& instance, WindAngles& spare_angles) {
    const bool any = instance.active_head != nullptr;
    InstanceCaches* caches = instance.caches;
    if (any && values.accelerate && values.spawn_type == kSpawnContainer)
        values.inside =
            open_inside_test(instance.container_source, caches != nullptr ? &caches->outline_index : nullptr);
    if (any && values.accelerate && values.spawn_type == kSpawnImage)
        values.mask = open_image(instance.spawn_image_source);
    if (any && values.wind_from_image) {
        const ParameterSlots& p = instance.parameters;
        const Vector3 scale = wind_scale(instance);
        values.wind_image = {open_image(instance.wind_source), wind_angles(caches, spare_angles), param::wind_force(p),
                             Float4{scale.x, scale.y, scale.z, 1}};
    }
}

}  // namespace

Vector3 global_wind(const SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    return wind_field(param::wind_force(p), param::wind_rot_x(p), param::wind_rot_z(p), wind_scale(instance));
}

void update_after_request(StepValues& values, const SmokeInstance& instance) {
    set_attachment(values, instance);
    if (values.wind_from_image) values.wind_image.reader = open_image(instance.wind_source);
}

void set_step_values(StepValues& values, SmokeInstance& instance, WindAngles& spare_angles) {
    values = StepValues{};
    values.time_step = static_cast<float>(instance.time_step);
    set_wind(values, instance);
    set_forces(values, instance);
    set_life_rules(values, instance);
    open_sources(values, instance, spare_angles);
}

}  // namespace tovu
