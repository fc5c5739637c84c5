// Explains what would surprise the author of a scene.
#pragma once

#include <string>
#include <vector>

#include "stage/scenefile/scene_build.h"
#include "stage/stage_export.h"

namespace stage {

/// A line for each surprise, with its numbers and how to avoid it: "file:line:column: …". For a scene that has not run
/// a frame. Reads the pictures of masks. built.warnings are not among the lines.
STAGE_EXPORT std::vector<std::string> lint_scene(const BuiltScene& built);

}  // namespace stage
