// What an instance keeps beside its fixed fields, only to be faster: everything here can be made anew from them.
#pragma once

#include <cstdint>

#include "host/particle_record.h"
#include "sources/outline_index.h"
#include "sources/spawn_areas.h"
#include "sources/wind_angles.h"

namespace tovu {

/// The live particles as pointers, oldest first, in records[begin … end).
struct ActiveArray {
    Particle** records = nullptr;
    int32_t begin = 0;
    int32_t end = 0;
    int32_t capacity = 0;
    bool follows_links = true;  // false once a particle could not be entered: walk the links until it is filled anew
};

struct SpeedUps {
    void* memory = nullptr;  // the allocation that holds it
    ActiveArray active;
    OutlineIndex outline_index;
    SpawnAreas spawn_areas;
    WindAngles wind_angles;
    bool wind_angles_filled = false;
};

}  // namespace tovu
