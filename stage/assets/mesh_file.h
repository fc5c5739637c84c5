// Reads mesh files, with the vertices in the order of the file.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"
#include "stage/stage_export.h"

namespace stage {

/// The meshes of a file, by its extension: .obj (Wavefront OBJ), .gltf or .glb (glTF 2.0). Coordinates are taken as
/// they stand, without the transformations of glTF nodes: a container places its geometry.
///
/// OBJ: a mesh for each object or group (and one for what stands before the first), in file order. Its vertices are
/// those that its faces, lines and points refer to, each once, in the order of the `v` lines; a section without any of
/// these has the vertices declared in it that nothing in the file refers to. Materials are not read.
///
/// glTF: a mesh for each primitive, mesh after mesh, with the vertices of its POSITION accessor in their order; its
/// `indices` are not used. Other files are read only where buffers name them.
///
/// Errors: file missing, longer than 128 MB or not readable; more than a million vertices; no mesh with a vertex in it;
/// a vertex that is not three finite numbers; an index, accessor or buffer outside what there is. Messages name the
/// file, for OBJ the line, for glTF the mesh and the primitive.
STAGE_EXPORT Result<std::vector<Mesh>> read_mesh_file(const std::string& path);

}  // namespace stage
