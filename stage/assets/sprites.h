// The built-in particle sprites, so that a scene needs no picture file.
#pragma once

#include <string>
#include <vector>

#include "picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// The names of all sprites. The first is the default.
STAGE_EXPORT std::vector<std::string> sprite_names();

/// Draws a sprite of size × size pixels (8…4096) as luminance and alpha: the particle's colour tints it, and its border
/// is fully transparent. The same name and size give the same bytes on every machine with IEEE 754 arithmetic.
/// Error: an unknown name.
STAGE_EXPORT Result<Picture> make_sprite(const std::string& name, int32_t size = 256);

}  // namespace stage
