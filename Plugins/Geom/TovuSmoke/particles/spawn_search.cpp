#include "spawn_search.h"

#include "../math/random.h"
#include "instance_caches.h"

namespace tovu {
namespace {

// Births beyond this, the highest registered rate at 20 frames per second, do not raise the number of rejections.
constexpr int32_t kMaxBirthsCounted = 500000;

// Points drawn directly are rejected only by rounding, or in the boxes that cover edges with many crossings. A shape
// that rejects this many in a row is too thin to contain a float32 point.
constexpr int32_t kMaxDirectTries = 200000;

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

void set_candidates(SpawnSearch& search, PlanePoint low, PlanePoint high) {
    search.low_across = low.across;
    search.low_along = low.along;
    search.twice_across = 2.0f * (high.across - low.across);
    search.twice_along = 2.0f * (high.along - low.along);
}

PlanePoint draw_candidate(const SpawnSearch& search) {
    const float across = search.low_across + random_up_to(search.twice_across);
    const float along = search.low_along + random_up_to(search.twice_along);
    return {across, along};
}

bool is_accepted(const SpawnSearch& search, PlanePoint point) {
    if (search.on_mask) return sample1(search.mask, point.across, point.along) > 0.0f;
    Vector3 tested{point.across, 0, 0};
    tested.*plane_of(*search.inside.source).along = point.along;
    return contains(search.inside, tested);
}

bool build_area(SpawnSearch& search) {
    search.area_built = true;
    return search.on_mask ? build_area(search.areas->mask, search.mask)
                          : build_area(search.areas->outline, *search.inside.source);
}

PlanePoint draw_from_area(const SpawnSearch& search) {
    return search.on_mask ? draw_from_area(search.areas->mask, search.mask) : draw_from_area(search.areas->outline);
}

bool find_directly(SpawnSearch& search, PlanePoint& point) {
    if (!search.area_built) search.area_fails = !build_area(search);
    for (int32_t tries = 0; tries < kMaxDirectTries && !search.area_fails; ++tries) {
        point = draw_from_area(search);
        if (is_accepted(search, point)) return true;
    }
    search.area_fails = true;
    return false;
}

bool find_point(SpawnSearch& search, PlanePoint& point) {
    for (; search.rejections_left > 0; --search.rejections_left) {
        point = draw_candidate(search);
        if (is_accepted(search, point)) return true;
    }
    return find_directly(search, point);
}

bool begin_on_container(const SmokeInstance& instance, SpawnSearch& search) {
    const ContainerSpawnSource& source = instance.container_source;
    if (!is_valid(source) || !is_usable(source)) return false;
    OutlineIndex* index = instance.caches != nullptr ? &instance.caches->outline_index : nullptr;
    search.inside = open_inside_test(source, index);
    const Plane plane = plane_of(source);
    set_candidates(search, {source.bbox_min.x, source.bbox_min.*plane.along},
                   {source.bbox_max.x, source.bbox_max.*plane.along});
    return true;
}

bool begin_on_mask(const SmokeInstance& instance, SpawnSearch& search) {
    const ImageSource& source = instance.spawn_image_source;
    if (!is_valid(source) || !is_usable(source)) return false;
    search.on_mask = true;
    search.mask = open_image(source);
    set_candidates(search, {source.rect_min_x, source.rect_min_y}, {source.rect_max_x, source.rect_max_y});
    return true;
}

}  // namespace

bool begin_search(const SmokeInstance& instance, SpawnSearch& search, int32_t due) {
    const int64_t counted = due < kMaxBirthsCounted ? due : kMaxBirthsCounted;
    search.rejections_left = kBaseRejections + kRejectionsPerBirth * counted;
    search.areas = instance.caches != nullptr ? &instance.caches->spawn_areas : &search.own_areas;
    switch (param::spawn_type(instance.parameters)) {
        case kSpawnContainer:
            return begin_on_container(instance, search);
        case kSpawnImage:
            return begin_on_mask(instance, search);
        default:
            return true;
    }
}

bool pick_point(const SmokeInstance& instance, SpawnSearch& search, Vector3& point) {
    const ContainerSpawnSource& source = instance.container_source;
    if (search.inside.way == InsideTest::kAskPlugin) {
        point = {0, 0, 0};  // a plug-in may write fewer than three components
        return ask_spawn_point(source, point);
    }
    if (search.inside.way == InsideTest::kContainerGone) return false;
    PlanePoint found{};
    if (!find_point(search, found)) return false;
    const Plane plane = plane_of(source);
    point.x = found.across;
    point.*plane.along = found.along;
    point.*plane.off_plane = source.bbox_min.*plane.off_plane + third_coordinate(source.depth);
    return true;
}

bool pick_lit_point(SpawnSearch& search, float range_z, Vector3& point) {
    PlanePoint found{};
    if (!find_point(search, found)) return false;
    point = {found.across, found.along, third_coordinate(range_z)};
    return true;
}

}  // namespace tovu
