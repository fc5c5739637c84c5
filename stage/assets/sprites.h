// The built-in particle sprites, so that a scene needs no picture file.
#pragma once

#include <string>
#include <vector>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct SpriteKind {
    std::string name;
    std::string purpose;  // one line for lists and menus
};

/// In the order of a menu; the first is the one to take when none is named.
STAGE_EXPORT const std::vector<SpriteKind>& sprite_kinds();

/// Draws a sprite of size × size pixels (8…4096) as luminance and alpha: the particle's colour tints it, and its border
/// is fully transparent. The same name and size give the same bytes on every machine that rounds as IEEE 754 says.
/// An unknown name is an error that lists the names.
STAGE_EXPORT Result<Picture> make_sprite(const std::string& name, int32_t size = 256);

}  // namespace stage
