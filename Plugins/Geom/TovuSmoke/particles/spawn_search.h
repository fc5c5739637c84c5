// The search for spawn points in a container's outlines or on a mask, for the births of one emission call.
#pragma once

#include "../instance/smoke_instance.h"
#include "../sources/spawn_areas.h"

namespace tovu {

constexpr int64_t kBaseRejections = 16384;
constexpr int64_t kRejectionsPerBirth = 5;

/// Candidates are drawn from twice the bounding box or rectangle until one is accepted. After kBaseRejections +
/// kRejectionsPerBirth per due birth, counted over the call, the remaining points are drawn directly from the accepted
/// area, which is built then: this bounds the time of a frame. Both ways give the same distribution.
struct SpawnSearch {
    InsideTest inside{};
    ImageReader mask{};
    bool on_mask = false;
    float low_across = 0;  // minimum of the candidates, and twice the extent of the box or rectangle
    float low_along = 0;
    float twice_across = 0;
    float twice_along = 0;
    int64_t rejections_left = 0;
    bool area_built = false;
    bool area_fails = false;  // it is empty, or none of its points is accepted
    SpawnAreas own_areas;     // used if the instance has no caches
    SpawnAreas* areas = nullptr;
};

/// Prepares the source of the spawn type; cubes and spheres need none. due: births of the call. Returns false if the
/// source can give no points: its object is gone or its extent is below kMinExtent. Stores pointers into `search`: do
/// not copy or move it afterwards.
bool begin_search(const SmokeInstance& instance, SpawnSearch& search, int32_t due);

/// Finds a point in the outlines of the spawn container, or asks its geometry plug-in for one. The third coordinate is
/// uniform over twice the depth above the minimum of the bounding box. Returns false, with `point` undefined, if the
/// container is gone, the plug-in refused or the outlines have no area.
bool pick_point(const SmokeInstance& instance, SpawnSearch& search, Vector3& point);

/// Finds a point of the x-y plane whose pixel in the spawn image is not 0; z is uniform over twice `range_z`.
/// Returns false if no pixel is lit.
bool pick_lit_point(SpawnSearch& search, float range_z, Vector3& point);

}  // namespace tovu
