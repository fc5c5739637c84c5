// The shapes of a scene's containers.
#pragma once

#include <vector>

#include "scene_description.h"
#include "stage/result.h"
#include "stage/scene/geometry.h"

namespace stage {

/// The meshes of a described shape, in container units. Adds a line to `warnings`, "file:line:column: …", for each
/// character that the font lacks. The error does not name the place in the scene file.
Result<std::vector<Mesh>> build_shape(const GeometryDescription& geometry, std::vector<std::string>& warnings);

}  // namespace stage
