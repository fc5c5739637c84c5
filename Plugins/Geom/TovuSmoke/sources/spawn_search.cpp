#include "spawn_search.h"

#include "../math/random.h"
#include "../speed_ups.h"

namespace tovu {
namespace {

// Points drawn directly are accepted but for rounding, or where edges cross inside a slice; the limit is for shapes
// that are nearly all crossings.
constexpr int32_t kMostDirectTries = 20000;

// Counts a rejected candidate; true once the search has to go on directly.
bool has_run_out(SpawnSearch& search) {
    return ++search.rejected_in_a_row >= kMostRejected;
}

float third_coordinate(float depth) {
    return depth > 0.0f ? random_up_to(2.0f * depth) : 0.0f;
}

/// The axes of a container source's reference plane.
struct Plane {
    float Vector3::*along;
    float Vector3::*off_plane;
};

Plane plane_of(const ContainerSpawnSource& source) {
    return source.ref_plane == 1 ? Plane{&Vector3::z, &Vector3::y} : Plane{&Vector3::y, &Vector3::z};
}

bool find_candidate(SpawnSearch& search, Plane plane, Vector3& point) {
    const ContainerSpawnSource& source = *search.inside.source;
    const Vector3 extent = source.bbox_max - source.bbox_min;
    while (!search.direct) {
        point.x = source.bbox_min.x + random_up_to(2.0f * extent.x);
        point.*plane.along = source.bbox_min.*plane.along + random_up_to(2.0f * extent.*plane.along);
        if (contains(search.inside, point)) {
            search.rejected_in_a_row = 0;
            return true;
        }
        if (!has_run_out(search)) continue;
        search.direct = true;
        search.direct_tries_left = build_area(search.outline_area, source) ? kMostDirectTries : 0;
    }
    return false;
}

bool find_directly(SpawnSearch& search, Plane plane, Vector3& point) {
    for (; search.direct_tries_left > 0; --search.direct_tries_left) {
        const PlanePoint drawn = draw_from_area(search.outline_area);
        point.x = drawn.across;
        point.*plane.along = drawn.along;
        if (contains(search.inside, point)) return true;
    }
    return false;
}

bool find_lit_candidate(SpawnSearch& search, Vector3& point) {
    const ImageSource& s = search.mask.source;
    const float extent_x = s.rect_max_x - s.rect_min_x;
    const float extent_y = s.rect_max_y - s.rect_min_y;
    while (!search.direct) {
        point.x = s.rect_min_x + random_up_to(2.0f * extent_x);
        point.y = s.rect_min_y + random_up_to(2.0f * extent_y);
        if (sample1(search.mask, point.x, point.y) > 0.0f) {
            search.rejected_in_a_row = 0;
            return true;
        }
        if (!has_run_out(search)) continue;
        search.direct = true;
        search.direct_tries_left = build_area(search.mask_area, search.mask) ? kMostDirectTries : 0;
    }
    return false;
}

bool find_lit_directly(SpawnSearch& search, Vector3& point) {
    for (; search.direct_tries_left > 0; --search.direct_tries_left) {
        const MaskPoint drawn = draw_from_area(search.mask_area, search.mask);
        point.x = drawn.x;
        point.y = drawn.y;
        if (sample1(search.mask, point.x, point.y) > 0.0f) return true;
    }
    return false;
}

}  // namespace

bool begin_search(const SmokeInstance& instance, SpawnSearch& search) {
    const SpawnType type = param::spawn_type(instance.parameters);
    if (type == kSpawnContainer) {
        const ContainerSpawnSource& source = instance.container_source;
        if (!is_valid(source) || !is_usable(source)) return false;
        OutlineIndex* index = instance.speed_ups != nullptr ? &instance.speed_ups->outline_index : nullptr;
        search.inside = open_inside_test(source, index);
    } else if (type == kSpawnImage) {
        const ImageSource& source = instance.spawn_image_source;
        if (!is_valid(source) || !is_usable(source)) return false;
        search.mask = open_image(source);
    }
    return true;
}

bool pick_point(const SmokeInstance& instance, SpawnSearch& search, Vector3& point) {
    const ContainerSpawnSource& source = instance.container_source;
    if (search.inside.way == InsideTest::kAskPlugin) {
        point = {0, 0, 0};  // of an answer that writes less than all three, the rest is not what the record held before
        return ask_spawn_point(source, point);
    }
    if (search.inside.way == InsideTest::kContainerGone) return false;
    const Plane plane = plane_of(source);
    if (!find_candidate(search, plane, point) && !find_directly(search, plane, point)) return false;
    point.*plane.off_plane = source.bbox_min.*plane.off_plane + third_coordinate(source.depth);
    return true;
}

bool pick_lit_point(SpawnSearch& search, float range_z, Vector3& point) {
    if (!find_lit_candidate(search, point) && !find_lit_directly(search, point)) return false;
    point.z = third_coordinate(range_z);
    return true;
}

void end_search(SpawnSearch& search) {
    release(search.outline_area);
    release(search.mask_area);
}

}  // namespace tovu
