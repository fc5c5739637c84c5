#include "mesh_file.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "mesh_file_formats.h"
#include "stage/file_ending.h"

namespace stage {

Result<std::string> read_whole_file(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) return Error{fmt::format("{}: there is no such file", path)};
    if (!std::filesystem::is_regular_file(status)) return Error{fmt::format("{}: not a regular file", path)};
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (error) return Error{fmt::format("{}: cannot be read: {}", path, error.message())};
    if (size > kMaxMeshFileBytes)
        return Error{fmt::format("{}: {} bytes; a mesh file may have at most {}", path, size, kMaxMeshFileBytes)};
    std::string bytes(static_cast<size_t>(size), '\0');
    std::ifstream file(path, std::ios::binary);
    if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
        return Error{fmt::format("{}: cannot be read", path)};
    return bytes;
}

Error too_many_vertices(const std::string& path) {
    return {fmt::format("{}: more than {} vertices, the most that a file may have", path, kMaxFileVertices)};
}

Result<std::vector<Mesh>> read_mesh_file(const std::string& path) {
    const std::string extension = file_ending(path);
    const bool is_gltf = extension == ".gltf" || extension == ".glb";
    if (!is_gltf && extension != ".obj")
        return Error{fmt::format("{}: not a mesh file; its name must end in .obj, .gltf or .glb", path)};
    Result<std::string> bytes = read_whole_file(path);
    if (!bytes) return bytes.error();
    Result<std::vector<Mesh>> meshes = is_gltf ? parse_gltf(path, std::move(*bytes)) : parse_obj(path, *bytes);
    if (!meshes) return meshes;
    std::erase_if(*meshes, [](const Mesh& mesh) { return mesh.vertices.empty(); });
    if (meshes->empty()) return Error{fmt::format("{}: contains no vertices", path)};
    return meshes;
}

}  // namespace stage
