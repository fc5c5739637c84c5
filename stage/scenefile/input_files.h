// The files that a scene reads.
#pragma once

#include <filesystem>
#include <vector>

#include "scene_description.h"
#include "stage/stage_export.h"

namespace stage {

/// The scene file and every file that it names: pictures, meshes and font files, also those of the timeline.
STAGE_EXPORT std::vector<std::filesystem::path> input_files(const SceneDescription& scene);

}  // namespace stage
