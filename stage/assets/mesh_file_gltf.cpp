#include <fmt/format.h>
#include <tiny_gltf.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string_view>

#include "mesh_file_formats.h"

namespace stage {
namespace {

constexpr size_t kBinaryHeaderBytes = 20;  // file header, length and type of the JSON chunk
constexpr int kMaxJsonDepth = 200;         // the parser recurses; real files stay below 20

bool is_binary(const std::string& bytes) {
    return bytes.starts_with("glTF");
}

std::string_view json_part(const std::string& bytes) {
    if (!is_binary(bytes)) return bytes;
    if (bytes.size() < kBinaryHeaderBytes) return {};
    uint32_t length = 0;
    std::memcpy(&length, bytes.data() + 12, sizeof length);  // little-endian in the file, as on this machine
    return std::string_view(bytes).substr(kBinaryHeaderBytes, length);
}

bool nests_too_deep(std::string_view json) {
    int depth = 0;
    bool in_text = false;
    for (size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (in_text && c == '\\') ++i;
        if (c == '"') in_text = !in_text;
        if (in_text) continue;
        if (c == '{' || c == '[') ++depth;
        if (c == '}' || c == ']') --depth;
        if (depth > kMaxJsonDepth) return true;
    }
    return false;
}

bool file_exists(const std::string& path, void*) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

std::string same_path(const std::string& path, void*) {
    return path;
}

bool read_buffer_file(std::vector<unsigned char>* bytes, std::string* message, const std::string& path, void*) {
    const Result<std::string> contents = read_whole_file(path);
    if (contents)
        bytes->assign(contents->begin(), contents->end());
    else
        *message = contents.error().message;
    return static_cast<bool>(contents);
}

bool skip_image(tinygltf::Image*, int, std::string*, std::string*, int, int, const unsigned char*, int, void*) {
    return true;
}

std::string one_line(std::string message) {
    while (!message.empty() && message.back() == '\n') message.pop_back();
    for (size_t at = 0; (at = message.find('\n', at)) != std::string::npos; at += 2) message.replace(at, 1, "; ");
    return message;
}

// Location of the positions of a primitive, checked to lie inside the buffer.
struct PositionData {
    const unsigned char* first = nullptr;
    size_t stride = 0, count = 0;
};

Result<PositionData> find_positions(const tinygltf::Model& model, const tinygltf::Primitive& primitive) {
    const auto attribute = primitive.attributes.find("POSITION");
    if (attribute == primitive.attributes.end()) return PositionData{};
    const auto outside = [](const char* what, int index, size_t count) {
        return Error{fmt::format("{} {} does not exist; the file has {}", what, index, count)};
    };
    const auto in = [](int index, const auto& list) { return index >= 0 && static_cast<size_t>(index) < list.size(); };

    if (!in(attribute->second, model.accessors)) return outside("accessor", attribute->second, model.accessors.size());
    const tinygltf::Accessor& accessor = model.accessors[static_cast<size_t>(attribute->second)];
    if (accessor.type != TINYGLTF_TYPE_VEC3 || accessor.componentType != TINYGLTF_COMPONENT_TYPE_FLOAT)
        return Error{"POSITION must be VEC3 of 32-bit floats; export without quantization or compression"};
    if (accessor.sparse.isSparse) return Error{"POSITION is a sparse accessor; export without sparse accessors"};
    if (!in(accessor.bufferView, model.bufferViews))
        return outside("POSITION's bufferView", accessor.bufferView, model.bufferViews.size());
    const tinygltf::BufferView& view = model.bufferViews[static_cast<size_t>(accessor.bufferView)];
    if (!in(view.buffer, model.buffers)) return outside("buffer", view.buffer, model.buffers.size());
    const std::vector<unsigned char>& data = model.buffers[static_cast<size_t>(view.buffer)].data;

    constexpr size_t kVertexBytes = 3 * sizeof(float);
    const int stride = accessor.ByteStride(view);
    if (stride < static_cast<int>(kVertexBytes))
        return Error{fmt::format("byteStride {}; it must be a multiple of 4 and at least 12", view.byteStride)};
    if (accessor.count > kMaxFileVertices)
        return Error{fmt::format("{} vertices; at most {} are allowed", accessor.count, kMaxFileVertices)};
    if (accessor.count == 0) return PositionData{};
    // Each offset is checked on its own first, so that their sum cannot wrap.
    const size_t span = (accessor.count - 1) * static_cast<size_t>(stride) + kVertexBytes;
    if (view.byteOffset > data.size() || accessor.byteOffset > data.size() || span > data.size() ||
        view.byteOffset + accessor.byteOffset + span > data.size())
        return Error{fmt::format("{} vertices from byte {} do not fit into the buffer's {} bytes", accessor.count,
                                 view.byteOffset + accessor.byteOffset, data.size())};
    return PositionData{data.data() + view.byteOffset + accessor.byteOffset, static_cast<size_t>(stride),
                        accessor.count};
}

Result<Mesh> read_positions(const PositionData& positions) {
    Mesh mesh;
    mesh.vertices.reserve(positions.count);
    for (size_t i = 0; i < positions.count; ++i) {
        Vector3 v;
        std::memcpy(&v, positions.first + i * positions.stride, sizeof v);
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z))
            return Error{fmt::format("vertex {} is ({}, {}, {}); all three must be finite", i, v.x, v.y, v.z)};
        mesh.vertices.push_back(v);
    }
    return mesh;
}

Result<std::vector<Mesh>> meshes_of(const std::string& path, const tinygltf::Model& model) {
    std::vector<Mesh> meshes;
    size_t vertices = 0;
    for (size_t m = 0; m < model.meshes.size(); ++m) {
        const tinygltf::Mesh& mesh = model.meshes[m];
        for (size_t p = 0; p < mesh.primitives.size(); ++p) {
            const auto located = [&](const Error& error) {
                return Error{fmt::format("{}: mesh {} \"{}\", primitive {}: {}", path, m, mesh.name, p, error.message)};
            };
            const Result<PositionData> positions = find_positions(model, mesh.primitives[p]);
            if (!positions) return located(positions.error());
            vertices += positions->count;
            if (vertices > kMaxFileVertices) return too_many_vertices(path);
            Result<Mesh> read = read_positions(*positions);
            if (!read) return located(read.error());
            meshes.push_back(std::move(*read));
        }
    }
    return meshes;
}

}  // namespace

Result<std::vector<Mesh>> parse_gltf(const std::string& path, std::string bytes) {
    if (nests_too_deep(json_part(bytes)))
        return Error{fmt::format("{}: JSON nested more than {} levels deep", path, kMaxJsonDepth)};
    const auto length = static_cast<unsigned>(bytes.size());
    // The parser counts the header of a binary chunk as part of its length and may read that far past the file's end.
    bytes.append(16, '\0');

    tinygltf::TinyGLTF parser;
    parser.SetFsCallbacks({file_exists, same_path, read_buffer_file, nullptr, nullptr});
    parser.SetImageLoader(skip_image, nullptr);
    const std::string folder = std::filesystem::path(path).parent_path().string();
    tinygltf::Model model;
    std::string error, warning;
    try {
        const bool parsed =
            is_binary(bytes)
                ? parser.LoadBinaryFromMemory(&model, &error, &warning,
                                              reinterpret_cast<const unsigned char*>(bytes.data()), length, folder)
                : parser.LoadASCIIFromString(&model, &error, &warning, bytes.data(), length, folder);
        if (!parsed) return Error{fmt::format("{}: not a readable glTF file: {}", path, one_line(error))};
    } catch (const std::exception& thrown) {
        return Error{fmt::format("{}: not a readable glTF file: {}", path, thrown.what())};
    }
    return meshes_of(path, model);
}

}  // namespace stage
