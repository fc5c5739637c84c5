// Meshes.
#pragma once

#include <tovu/vector3.h>

#include <vector>

namespace stage {

/// One closed outline or one part of a model; the order of the vertices is kept. Container units.
struct Mesh {
    std::vector<Vector3> vertices;
};

}  // namespace stage
