#include "stage/assets/mesh_file.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cstring>

#include "temporary_folder.h"

using namespace stage;
using testing::HasSubstr;

namespace {

// A line "x,y,z x,y,z" for each mesh, or the error.
std::string described(const TemporaryFolder& folder, const std::string& name) {
    const auto meshes = read_mesh_file(folder / name);
    if (!meshes) return meshes.error().message;
    std::string text;
    for (const Mesh& mesh : *meshes) {
        for (const Vector3& v : mesh.vertices) text += fmt::format("{},{},{} ", v.x, v.y, v.z);
        text.back() = '\n';
    }
    return text;
}

std::string described(const TemporaryFolder& folder, const std::string& name, const std::string& bytes) {
    write_bytes(folder / name, bytes);
    return described(folder, name);
}

// Name, text, and the lines of all meshes or a part of the error.
const std::tuple<const char*, const char*, const char*> kObjCases[] = {
    {"faces do not change the order", "v 1 2 3\nv 4 5 6\nv 7 8 9\nv 7 8 9\nf 3 1 2\nf 4 2 1\n",
     "1,2,3 4,5,6 7,8,9 7,8,9\n"},
    {"a mesh for each object and group",
     "v 9 9 9\no a\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 2 3 4\ng b\nv 5 0 0\nv 6 0 0\nl -1 -2 2\no unused\nf 1 1 1\n",
     "0,0,0 1,0,0 1,1,0\n0,0,0 5,0,0 6,0,0\n9,9,9\n"},
    {"shared vertices first, groups after", "v 0 0 0\nv 1 0 0\nv 2 0 0\ng a\nf 3 2 1\ng b\nl 2 3\n",
     "0,0,0 1,0,0 2,0,0\n1,0,0 2,0,0\n"},
    {"vertices without elements", "o a\nv 0 0 0\nv 1 0 0\no b\nv 2 0 0\n", "0,0,0 1,0,0\n2,0,0\n"},
    {"faces before their vertices", "f 1 2 3\nv 0 0 0\nv 1 0 0\nv 2 0 0\n", "0,0,0 1,0,0 2,0,0\n"},
    {"what an exporter writes",
     "# comment\r\nmtllib none.mtl\r\no cup\r\nv +1.5 -2e1 .25 1.0\r\nvt 0 0\r\nvn 0 0 1\r\n  v\t1 1 1\r\nv 3 3 3 0.1 "
     "0.2 0.3\r\nusemtl x\r\ns off\r\nf 1/1/1 2/1/1 \\\n 3//1\r\n",
     "1.5,-20,0.25 1,1,1 3,3,3\n"},
    {"not OBJ", "PNG\nthis is no mesh\n", "t.obj: contains no vertices"},
    {"a word for a number", "v 0 0 0\n\nv 0 zero 0\n", "t.obj:3: a vertex must be three finite numbers, as in"},
    {"truncated vertex", "v 0 0 0\r\nv 1 2", "t.obj:2: a vertex must be three"},
    {"out of float range", "v 1e300 0 0\n", "t.obj:1: a vertex must be three"},
    {"index 0", "v 0 0 0\nf 1 1 0\n", "t.obj:2: vertex index 0 does not exist; the file declares 1 vertices before it"},
    {"index before the first", "v 0 0 0\nv 1 0 0\nl 1 -3\n",
     "t.obj:3: vertex index -3 does not exist; the file declares 2 vertices"},
    {"index after the last", "v 0 0 0\nf 1 1 1\nf 1 2 1\nf 1 1 1\n",
     "t.obj:3: vertex index 2 does not exist; the file declares 1"},
};

TEST(ObjFile, GivesVerticesInStoredOrder) {
    const TemporaryFolder folder;
    for (const auto& [name, text, expected] : kObjCases) {
        SCOPED_TRACE(name);
        const std::string told = described(folder, "t.obj", text);
        EXPECT_TRUE(told.ends_with('\n') ? told == expected : told.find(expected) != std::string::npos) << told;
    }
}

// Two primitives with three and two positions: the floats 0 to 14. Each position of the second has a gap of 4 bytes.
constexpr const char* kPositions = "0,1,2 3,4,5 6,7,8\n9,10,11 12,13,14\n";
constexpr const char* kGltf = R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":68,"uri":
"data:application/octet-stream;base64,AAAAAAAAgD8AAABAAABAQAAAgEAAAKBAAADAQAAA4EAAAABBAAAQQQAAIEEAADBBAACAvwAAQEEAAFBBAABgQQAAgL8="}],
"bufferViews":[{"buffer":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":32,"byteStride":16}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,1,2],"max":[6,7,8]},
{"bufferView":1,"componentType":5126,"count":2,"type":"VEC3","min":[9,10,11],"max":[12,13,14]}],
"images":[{"uri":"missing.png"}],
"meshes":[{"name":"pan","primitives":[{"attributes":{"POSITION":0}},{"attributes":{"POSITION":1}}]}]})";

/// The same as a binary file.
std::string glb() {
    std::string json = kGltf;
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const auto length = static_cast<uint32_t>(json.size());
    const uint32_t words[] = {0x46546C67, 2, 20 + length, length, 0x4E4F534A};  // "glTF", version, size; chunk "JSON"
    return std::string(reinterpret_cast<const char*>(words), sizeof words) + json;
}

TEST(GltfFile, GivesPositionsInStoredOrder) {
    const TemporaryFolder folder;
    EXPECT_EQ(described(folder, "t.gltf", kGltf), kPositions);
    EXPECT_EQ(described(folder, "t.GLB", glb()), kPositions);
}

// A part of the valid file, its replacement, and a part of the message.
const std::tuple<const char*, const char*, const char*> kGltfCases[] = {
    {R"("POSITION":1)", R"("POSITION":2)",
     "t.gltf: mesh 0 \"pan\", primitive 1: accessor 2 does not exist; the file has 2"},
    {R"("POSITION":1)", R"("POSITION":-7)", "primitive 1: accessor -7 does not exist; the file has 2"},
    {R"("bufferView":1)", R"("bufferView":2)", "POSITION's bufferView 2 does not exist; the file has 2"},
    {R"("buffer":0,"byteOffset")", R"("buffer":3,"byteOffset")",
     "primitive 1: buffer 3 does not exist; the file has 1"},
    {R"("count":2)", R"("count":3)", "3 vertices from byte 36 do not fit into the buffer's 68 bytes"},
    {R"("byteOffset":36)", R"("byteOffset":18446744073709551608)", "do not fit into the buffer's 68 bytes"},
    {R"("byteStride":16)", R"("byteStride":8)", "byteStride 8; it must be a multiple of 4 and at least 12"},
    {R"("type":"VEC3","min":[9)", R"("type":"VEC2","min":[9)", "POSITION must be VEC3 of 32-bit floats"},
    {R"(5126,"count":3)", R"(5123,"count":3)", "POSITION must be VEC3 of 32-bit floats"},
    {"AAAAAAAAgD8", "AADAfwAAgD8", "mesh 0 \"pan\", primitive 0: vertex 0 is (nan, 1, 2); all three must be finite"},
    {"}]}]}", "}]}]", "t.gltf: not a readable glTF file: [json.exception.parse_error.101]"},
};

TEST(GltfFile, SaysWhereItIsBroken) {
    const TemporaryFolder folder;
    for (const auto& [sound, broken, message] : kGltfCases) {
        SCOPED_TRACE(broken);
        std::string text = kGltf;
        const size_t at = text.find(sound);
        ASSERT_NE(at, std::string::npos);
        EXPECT_THAT(described(folder, "t.gltf", text.replace(at, std::strlen(sound), broken)), HasSubstr(message));
    }
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_THAT(described(folder, "t.gltf", "{\"extras\":" + deep + "}"),
                HasSubstr("JSON nested more than 200 levels deep"));
}

TEST(MeshFile, NamesTheFileThatCannotBeRead) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "folder.obj");
    write_bytes(folder / "mesh.stl", "solid");
    write_bytes(folder / "large.obj", "v 0 0 0\n");
    std::filesystem::resize_file(folder / "large.obj", (uintmax_t{128} << 20) + 1);
    const std::pair<const char*, const char*> kCases[] = {
        {"gone.obj", "gone.obj: there is no such file"},
        {"folder.obj", "folder.obj: not a regular file"},
        {"mesh.stl", "mesh.stl: not a mesh file; its name must end in .obj, .gltf or .glb"},
        {"large.obj", "large.obj: 134217729 bytes; a mesh file may have at most 134217728"},
    };
    for (const auto& [name, message] : kCases) EXPECT_THAT(described(folder, name), HasSubstr(message));
}

}  // namespace
