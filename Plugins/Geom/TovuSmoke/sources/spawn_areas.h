// The areas that a search for spawn points builds. Kept between calls to reuse the memory.
#pragma once

#include "mask_area.h"
#include "outline_area.h"

namespace tovu {

/// The accepted area of an outline source and of a mask. Rebuilt before use.
struct SpawnAreas {
    OutlineArea outline;
    MaskArea mask;
};

}  // namespace tovu
