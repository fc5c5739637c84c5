// Finds spawn points in the shape of a container or on a mask, for the births of one emission call.
#pragma once

#include "../smoke_instance.h"
#include "mask_area.h"
#include "outline_area.h"

namespace tovu {

/// Candidates are drawn from twice the box or rectangle until one is accepted. Once kMostRejected in a row were not,
/// the rest of the call's points come directly from the accepted area, which is worked out then, at most once: a frame
/// never waits for luck. The distribution is the same either way.
struct SpawnSearch {
    InsideTest inside{};
    ImageReader mask{};
    int32_t rejected_in_a_row = 0;
    bool direct = false;
    int32_t direct_tries_left = 0;
    OutlineArea outline_area;
    MaskArea mask_area;
};

constexpr int32_t kMostRejected = 256;

/// Prepares the source of the spawn type. Returns false when it can give no points: its object is gone or its extent is
/// below kLeastExtent. Cubes and spheres need no search.
bool begin_search(const SmokeInstance& instance, SpawnSearch& search);

/// A point in the shape of the spawn container; the third coordinate is uniform over twice the depth above the box's
/// minimum. Returns false, leaving `point` to be ignored, when the container is gone, its geometry refused, or the
/// shape has no area.
bool pick_point(const SmokeInstance& instance, SpawnSearch& search, Vector3& point);

/// A point of the x-y plane whose pixel in the spawn image is not 0; z is uniform over twice `range_z`.
/// Returns false when no pixel is lit.
bool pick_lit_point(SpawnSearch& search, float range_z, Vector3& point);

/// Frees what the search worked out.
void end_search(SpawnSearch& search);

}  // namespace tovu
