// Finds spawn points in the shape of a container or on a mask, for the births of one emission call.
#pragma once

#include "../instance/smoke_instance.h"
#include "../sources/spawn_areas.h"

namespace tovu {

/// Candidates are drawn from twice the box or rectangle until one is accepted. Once 16384 + 5 for each birth due were
/// rejected, counted over the call, the rest of its points come directly from the accepted area, which is worked out
/// then: a frame never waits for luck. The distribution is the same either way.
struct SpawnSearch {
    InsideTest inside{};
    ImageReader mask{};
    bool on_mask = false;
    float low_across = 0;  // where candidates begin, and twice the extent from there
    float low_along = 0;
    float twice_across = 0;
    float twice_along = 0;
    int64_t rejections_left = 0;
    bool area_built = false;
    bool area_fails = false;  // there is none, or none of its points is accepted
    SpawnAreas own_areas;     // of an instance that has no speed-ups
    SpawnAreas* areas = nullptr;
};

/// Prepares the source of the spawn type. due: births of the call. Returns false when the source can give no points:
/// its object is gone or its extent is below kLeastExtent. Cubes and spheres need no search. The search refers to
/// itself: not to be copied or moved.
bool begin_search(const SmokeInstance& instance, SpawnSearch& search, int32_t due);

/// A point in the shape of the spawn container; the third coordinate is uniform over twice the depth above the box's
/// minimum. Returns false, leaving `point` to be ignored, when the container is gone, its geometry refused, or the
/// shape has no area.
bool pick_point(const SmokeInstance& instance, SpawnSearch& search, Vector3& point);

/// A point of the x-y plane whose pixel in the spawn image is not 0; z is uniform over twice `range_z`.
/// Returns false when no pixel is lit.
bool pick_lit_point(SpawnSearch& search, float range_z, Vector3& point);

}  // namespace tovu
