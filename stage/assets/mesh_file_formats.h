// The readers behind read_mesh_file, one for each format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"

namespace stage {

constexpr uintmax_t kMaxMeshFileBytes = uintmax_t{128} << 20;
constexpr size_t kMaxFileVertices = 1'000'000;

/// The whole of a regular file of at most kMaxMeshFileBytes; the error names the file.
Result<std::string> read_whole_file(const std::string& path);

Error too_many_vertices(const std::string& path);

/// `path` is for messages and, for glTF, the place that buffers are looked for beside. Meshes may be empty.
Result<std::vector<Mesh>> parse_obj(const std::string& path, const std::string& text);
Result<std::vector<Mesh>> parse_gltf(const std::string& path, std::string bytes);

}  // namespace stage
