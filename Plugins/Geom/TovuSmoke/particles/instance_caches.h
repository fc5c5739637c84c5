// Per-instance caches; all can be rebuilt from the block.
#pragma once

#include "../sources/outline_index.h"
#include "../sources/spawn_areas.h"
#include "../sources/wind_field.h"
#include "active_array.h"

namespace tovu {

struct InstanceCaches {
    void* memory = nullptr;  // the allocation that contains this struct
    ActiveArray active;
    OutlineIndex outline_index;
    SpawnAreas spawn_areas;
    WindAngles wind_angles;
    bool wind_angles_filled = false;
};

/// Allocates empty caches. Returns null when there is no memory: the instance then works without them.
InstanceCaches* make_caches();

/// Frees the caches with all that they own; null is allowed.
void destroy_caches(InstanceCaches* caches);

}  // namespace tovu
