// Reads mesh files, with the vertices in the order of the file.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

/// Reads the meshes of a file. Its extension tells the format: .obj (Wavefront OBJ), .gltf or .glb (glTF 2.0).
/// Coordinates are not changed; the transformations of glTF nodes are ignored, since a container places its geometry.
///
/// OBJ: one mesh for each section, in file order. A section is an object, a group, or the lines before the first of
/// these. Its vertices are those that its faces, lines and points refer to, each once, in the order of the `v` lines. A
/// section without faces, lines and points has those of its own vertices that nothing in the file refers to. Materials
/// are not read.
///
/// glTF: one mesh for each primitive, in file order, with the vertices of its POSITION accessor in their order;
/// `indices` are ignored. The only other files that are read are those that buffers name.
///
/// Errors: the file is missing, longer than 128 MB or not readable; more than a million vertices; no vertices; a vertex
/// that is not three finite numbers; a vertex index, accessor or buffer that does not exist. Messages name the file,
/// for OBJ the line, for glTF the mesh and the primitive.
STAGE_EXPORT Result<std::vector<Mesh>> read_mesh_file(const std::string& path);

}  // namespace stage
