// Explains settings of a scene that have a surprising result.
#pragma once

#include <string>
#include <vector>

#include "stage/scenefile/scene_build.h"
#include "stage/stage_export.h"

namespace stage {

/// A line "file:line:column: …" for each surprise, with its numbers and the way to avoid it. Does not repeat
/// built.warnings. Call before the first frame runs. Reads the pictures of masks.
STAGE_EXPORT std::vector<std::string> lint_scene(const BuiltScene& built);

}  // namespace stage
