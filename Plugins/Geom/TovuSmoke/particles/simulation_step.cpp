#include "simulation_step.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "../services/host_queries.h"
#include "active_array.h"
#include "camera_alignment.h"
#include "emission.h"
#include "instance_caches.h"
#include "particle_motion.h"
#include "pool.h"
#include "prefetch_record.h"

namespace tovu {
namespace {

/// Prefetches the first records and the curve tables while the host answers the queries that follow. With many small
/// smokes in a scene, each evicts the others' data from the cache.
void prefetch_first(const SmokeInstance& instance) {
    constexpr int32_t kFirstRecords = 32;
    const ActiveRecords active = active_records(instance);
    for (int32_t i = active.count - 1; i >= 0 && i >= active.count - kFirstRecords; --i)
        prefetch_record(active.records[i]);
    if (active.count == 0) return;
    const char* const tables = reinterpret_cast<const char*>(&instance) + offsetof(SmokeInstance, color_table);
    for (size_t i = 0; i < sizeof(ColorTable) + sizeof(AlphaTable); i += 64) __builtin_prefetch(tables + i);
}

void refresh_container_source(SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    ContainerSpawnSource& source = instance.container_source;
    if (param::spawn_type(p) != kSpawnContainer || !is_valid(source)) return;
    refresh(source);
    if (instance.caches != nullptr) instance.caches->outline_index.stale = true;
    set_ref_plane(source, param::spawn_cont_ref_plane_is_xz(p) ? 1 : 0);
    set_coord_mode(source, param::spawn_cont_coord_is_world(p) ? 1 : 0);  // takes effect at the next refresh
    set_depth(source, param::spawn_range_z(p));
}

void read_placement(SmokeInstance& instance) {
    instance.abs_position = host::absolute_position(instance.container_handle);
    instance.abs_rotation = host::absolute_rotation(instance.container_handle);
    instance.abs_scale = host::absolute_scaling(instance.container_handle);
    instance.transformation_matrix = host::transformation_matrix(instance.container_handle);
    std::memcpy(instance.transformation_copy, instance.transformation_matrix.m, sizeof instance.transformation_copy);
    Matrix4 placement;
    rotate(placement, instance.abs_rotation);
    scale(placement, instance.abs_scale);
    instance.rotation_scale_matrix = placement;
}

// NaN, or a time that float32 cannot represent, would stay in the accumulator forever. It counts as no time.
bool is_countable(double seconds) {
    return seconds > 0.0 && std::isfinite(static_cast<float>(seconds));
}

// Truncates and clamps to int32: a jump of the host's clock can make more births due than int32 can count.
int32_t whole_births(float due) {
    if (!(due > -2147483648.0f)) return INT32_MIN;
    return due < 2147483648.0f ? static_cast<int32_t>(due) : INT32_MAX;
}

void give_births(SmokeInstance& instance) {
    instance.birth_accumulator += static_cast<float>(instance.time_step);
    // At rate 0 the period is infinite, of either sign: no births.
    const float period = 1.0f / param::birth_rate(instance.parameters);
    if (!(period < instance.birth_accumulator) || !std::isfinite(period)) return;
    int32_t births = whole_births(instance.birth_accumulator / period);
    if (instance.consumer_attached && births > instance.consumer_birth_limit) births = instance.consumer_birth_limit;
    emit_particles(instance, births);  // a negative number makes none
    // Births that the pool had no record for are lost. Births beyond a consumer's limit stay due.
    instance.birth_accumulator -= static_cast<float>(births) * period;
}

Bounds in_container(const SmokeInstance& instance, const Bounds& world) {
    const Vector3 angles = instance.abs_rotation;
    Matrix4 turn_back;  // the last factor acts first: rotates about x, then y, then z
    rotate_z(turn_back, -angles.z);
    rotate_y(turn_back, -angles.y);
    rotate_x(turn_back, -angles.x);
    Bounds local;
    for (int corner = 0; corner < 8; ++corner) {
        const Vector3 point{corner & 1 ? world.high.x : world.low.x, corner & 2 ? world.high.y : world.low.y,
                            corner & 4 ? world.high.z : world.low.z};
        const Vector3 turned = transform(turn_back, point - instance.abs_position);
        const Vector3 s = instance.abs_scale;
        widen(local, {turned.x / s.x, turned.y / s.y, turned.z / s.z});
    }
    return local;
}

void send_bounding_box(const SmokeInstance& instance, const Bounds& bounds) {
    Bounds box = param::reference(instance.parameters) == kReferenceWorld ? in_container(instance, bounds) : bounds;
    if (instance.active_head == nullptr) box = {{0, 0, 0}, {0, 0, 0}};
    _api__container_set_bounding_box(instance.container_handle, box.low.x, box.low.y, box.low.z, box.high.x, box.high.y,
                                     box.high.z);
}

}  // namespace

double compute_time_step(SmokeInstance& instance) {
    if (host::is_post_recording()) {
        const float now = host::post_current_time();
        const float before = instance.last_post_time;
        instance.last_post_time = now;
        return before >= 0.0f ? static_cast<double>(now - before) : -1.0;
    }
    const int32_t retrace = host::retrace_counter();
    if (retrace == instance.last_retrace) return 0.0;
    instance.last_retrace = retrace;
    return host::frame_period();  // one frame, even if frames were dropped
}

void simulation_step(SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    const double seconds = compute_time_step(instance);
    instance.time_step = is_countable(seconds) ? seconds : 0.0;
    if (!(seconds < 0.0) && instance.time_step == 0.0) return;
    prefetch_first(instance);
    refresh_container_source(instance);
    sync_capacity(instance);
    if (instance.consumer_attached && instance.deleted_head != nullptr) purge_deleted(instance);
    instance.draw_mode = draw_mode_of(param::reference(p), param::billboard(p));
    read_placement(instance);
    align_to_camera(instance);
    if (param::freeze_motion(p)) return;
    give_births(instance);
    send_bounding_box(instance, move_particles(instance));
}

}  // namespace tovu
