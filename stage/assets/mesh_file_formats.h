// The parsers that read_mesh_file uses, one for each format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/scene/mesh.h"

namespace stage {

constexpr uintmax_t kMaxMeshFileBytes = uintmax_t{128} << 20;
constexpr size_t kMaxFileVertices = 1'000'000;

/// Reads a regular file of at most kMaxMeshFileBytes. The error names the file.
Result<std::string> read_whole_file(const std::string& path);

Error too_many_vertices(const std::string& path);

/// `path` appears in messages; glTF buffers are looked up in its folder. Meshes of the result may be empty.
Result<std::vector<Mesh>> parse_obj(const std::string& path, const std::string& text);
Result<std::vector<Mesh>> parse_gltf(const std::string& path, std::string bytes);

}  // namespace stage
