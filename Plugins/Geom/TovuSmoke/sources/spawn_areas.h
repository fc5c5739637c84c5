// What a search for spawn points works out at most once per emission call, kept from call to call for its memory.
#pragma once

#include "mask_area.h"
#include "outline_area.h"

namespace tovu {

/// The accepted area of either kind of source, as the last call left it.
struct SpawnAreas {
    OutlineArea outline;
    MaskArea mask;
};

}  // namespace tovu
