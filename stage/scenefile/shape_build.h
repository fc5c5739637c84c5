// Builds the shapes of a scene's containers.
#pragma once

#include <vector>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/scene/geometry.h"

namespace stage {

/// The meshes of a shape, in container units. Adds a line "file:line:column: …" to `warnings` for each character that
/// is missing in the font. The error does not name the place in the scene file.
Result<std::vector<Mesh>> build_shape(const GeometryDescription& geometry, std::vector<std::string>& warnings);

}  // namespace stage
