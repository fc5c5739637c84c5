#include "draw_list.h"

#include "../particles/active_array.h"
#include "../particles/prefetch_record.h"
#include "../services/host_queries.h"
#include "truncate.h"

namespace tovu {

int32_t sort_event;
int32_t qsort_event;
DrawEntry draw_list[kMaxParticles];

namespace {

/// The origin and direction of depth, in the coordinates of the particles' positions.
struct ViewAxis {
    Vector3 eye;
    Vector3 direction;  // length 1, or 0 if the camera has no direction
};

ViewAxis view_axis(const SmokeInstance& instance) {
    const int32_t camera_handle = host::render_camera();
    Vector3 eye = host::camera_position(camera_handle);
    Vector3 ahead = eye + host::camera_direction(camera_handle);
    const Matrix4 to_local = host::inverse_matrix(instance.container_handle);
    if (positions_are_local(instance.draw_mode)) {
        eye = transform(to_local, eye);
        ahead = transform(to_local, ahead);
    }
    Vector3 direction = ahead - eye;
    normalize(direction);
    return {eye, direction};
}

/// The depth in thousandths of a unit, negated: ascending keys run from the farthest to the nearest.
int32_t depth_key(const ViewAxis& view, Vector3 position) {
    return truncated(-dot(view.direction, position - view.eye) * 1000.0f);
}

bool is_skipped(const SmokeInstance& instance, const Particle& particle) {
    return instance.consumer_attached != 0 && particle.claimed == 0 && particle.released == 0;
}

/// Lists every particle that is not skipped, in active-list order, and returns their number.
int32_t list_records(const SmokeInstance& instance) {
    const ActiveRecords active = active_records(instance);
    int32_t count = 0;
    if (active.records == nullptr) {
        // Bounded, since a consumer may have joined the links into a ring.
        int32_t walked = 0;
        for (Particle* p = instance.active_head; p != nullptr && walked < kMaxParticles; p = p->next, ++walked)
            if (!is_skipped(instance, *p)) draw_list[count++].particle = p;
        return count;
    }
    const int32_t live = active.count < kMaxParticles ? active.count : kMaxParticles;
    for (int32_t i = active.count - 1, end = active.count - live; i >= end; --i) {
        if (instance.consumer_attached != 0) {
            __builtin_prefetch(&active.records[i - kPrefetchDistance > end ? i - kPrefetchDistance : end]->claimed);
            if (is_skipped(instance, *active.records[i])) continue;
        }
        draw_list[count++].particle = active.records[i];
    }
    return count;
}

void write_keys(const ViewAxis& view, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        __builtin_prefetch(draw_list[i + kPrefetchDistance < count ? i + kPrefetchDistance : count - 1].particle);
        draw_list[i].key = depth_key(view, draw_list[i].particle->position);
    }
}

}  // namespace

void collect_draw_list(SmokeInstance& instance) {
    pelEventStart(sort_event);
    instance.draw_count = 0;
    if (instance.active_head != nullptr) {
        const ViewAxis view = view_axis(instance);
        instance.draw_count = list_records(instance);
        if (param::sort(instance.parameters)) {
            write_keys(view, instance.draw_count);
            pelEventStart(qsort_event);
            merge_sort_entries(draw_list, instance.draw_count);
            pelEventEnd(qsort_event);
        }
    }
    pelEventEnd(sort_event);
}

}  // namespace tovu
