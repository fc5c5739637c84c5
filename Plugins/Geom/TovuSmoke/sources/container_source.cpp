#include "container_source.h"

#include <cstdio>
#include <cstdlib>

#include "../host/spawn_requests.h"
#include "../math/polygon.h"
#include "../services/host_queries.h"
#include "image_source.h"
#include "outline_index.h"

namespace tovu {
namespace {

constexpr int32_t kMeshAccessKind = 2;
constexpr int32_t kRefPlaneXZ = 1;
constexpr int32_t kCoordWorld = 1;

bool request(int32_t geometry_handle, int32_t code, void* data) {
    int32_t reply = 0;
    return _api__geom_dispatcher(geometry_handle, code, data, &reply) != 0 && reply != 0;
}

bool ask_geometry(const ContainerSpawnSource& source, int32_t code, Vector3& point) {
    if (!is_valid(source)) return false;
    const int32_t geometry_handle = host::container_geometry(source.container);
    return _api__object_valid(geometry_handle) != 0 && request(geometry_handle, code, &point);
}

int32_t open_meshes(int32_t geometry_handle) {
    int32_t detail = 0;
    _api__get_geom_detail(geometry_handle, &detail);
    int32_t mesh_access = 0;
    _api__get_geom_geomod(geometry_handle, kMeshAccessKind, detail, &mesh_access);
    return mesh_access;
}

// The capacity changes only if both arrays grew, so a later refresh tries again.
bool reserve_outlines(ContainerSpawnSource& source) {
    if (source.outline_count <= source.outline_capacity) return true;
    const auto count = static_cast<size_t>(source.outline_count);
    void* sizes = std::realloc(source.outline_sizes, count * sizeof(int32_t));
    if (sizes != nullptr) source.outline_sizes = static_cast<int32_t*>(sizes);
    void* starts = std::realloc(source.outline_starts, count * sizeof(Vector3*));
    if (starts != nullptr) source.outline_starts = static_cast<Vector3**>(starts);
    if (sizes == nullptr || starts == nullptr) return false;
    source.outline_capacity = source.outline_count;
    return true;
}

// Allocates twice what is needed, so that text or a mesh that grows does not allocate in every frame.
bool reserve_vertices(ContainerSpawnSource& source, int32_t needed) {
    if (needed <= source.vertex_capacity) return true;
    std::free(source.vertex_store);
    source.vertex_capacity = 0;
    source.vertex_store = nullptr;
    if (needed > INT32_MAX / 2) return false;
    const int32_t capacity = 2 * needed;
    source.vertex_store = static_cast<Vector3*>(std::calloc(static_cast<size_t>(capacity), sizeof(Vector3)));
    if (source.vertex_store == nullptr) return false;
    source.vertex_capacity = capacity;
    return true;
}

void widen(ContainerSpawnSource& source, Vector3 v) {
    Vector3& low = source.bbox_min;
    Vector3& high = source.bbox_max;
    if (v.x < low.x) low.x = v.x;
    if (v.y < low.y) low.y = v.y;
    if (v.z < low.z) low.z = v.z;
    if (v.x > high.x) high.x = v.x;
    if (v.y > high.y) high.y = v.y;
    if (v.z > high.z) high.z = v.z;
}

/// Access to the meshes of one geometry.
struct MeshWalk {
    int32_t mesh_access;
    bool to_world;
    Matrix4 matrix;
};

Vector3 read_vertex(const MeshWalk& walk, int32_t vertex_cursor) {
    Vector3 v{};
    _api__geomod_get_vertex(walk.mesh_access, vertex_cursor, &v.x, &v.y, &v.z);
    return walk.to_world ? transform(walk.matrix, v) : v;
}

// Stores no more vertices than there is room for: the counts of the meshes may exceed the total.
int32_t read_outline(ContainerSpawnSource& source, const MeshWalk& walk, int32_t mesh_cursor, int32_t first) {
    int32_t count = 0;
    _api__geomod_get_num_mesh_verices(walk.mesh_access, mesh_cursor, &count);
    int32_t vertex_cursor = 0;
    _api__geomod_goto_vertex(walk.mesh_access, mesh_cursor, 0, &vertex_cursor);
    const int32_t room = source.vertex_capacity - first;
    const int32_t stored = count < 0 ? 0 : count < room ? count : room;
    for (int32_t k = 0; k < stored; ++k) {
        const Vector3 v = read_vertex(walk, vertex_cursor);
        source.vertex_store[first + k] = v;
        widen(source, v);
        _api__geomod_next_vertex(walk.mesh_access, mesh_cursor, &vertex_cursor);
    }
    return stored;
}

void read_outlines(ContainerSpawnSource& source, const MeshWalk& walk) {
    int32_t mesh_cursor = 0;
    int32_t vertex_cursor = 0;
    _api__geomod_goto_mesh(walk.mesh_access, 0, &mesh_cursor);
    _api__geomod_goto_vertex(walk.mesh_access, mesh_cursor, 0, &vertex_cursor);
    source.bbox_min = source.bbox_max = read_vertex(walk, vertex_cursor);
    int32_t first = 0;
    for (int32_t i = 0; i < source.outline_count; ++i) {
        source.outline_starts[i] = source.vertex_store + first;
        source.outline_sizes[i] = read_outline(source, walk, mesh_cursor, first);
        first += source.outline_sizes[i];
        _api__geomod_next_mesh(walk.mesh_access, &mesh_cursor);
    }
}

void read_meshes(ContainerSpawnSource& source, int32_t geometry_handle) {
    const Matrix4 matrix = host::transformation_matrix(source.container);
    const int32_t mesh_access = open_meshes(geometry_handle);
    if (mesh_access == 0) {
        std::fputs("GeoModifier not valid\n", stdout);
        return;
    }
    _api__geomod_init(mesh_access);
    int32_t vertex_count = 0;
    int32_t mesh_count = 0;
    uint8_t flags[3] = {0, 0, 0};
    _api__geomod_get_info(mesh_access, &vertex_count, &mesh_count, &flags[0], &flags[1], &flags[2]);
    if (mesh_count <= 0) return;
    // Outlines without vertices have no effect, so a larger mesh count is invalid and would only cost time.
    const int32_t max_count = vertex_count > 1 ? vertex_count : 1;
    source.outline_count = mesh_count < max_count ? mesh_count : max_count;
    if (reserve_vertices(source, vertex_count) && reserve_outlines(source))
        read_outlines(source, {mesh_access, source.coord_mode == kCoordWorld, matrix});
    else
        source.outline_count = 0;
}

bool inside_an_outline(const ContainerSpawnSource& source, Vector3 point) {
    const auto inside = source.ref_plane == kRefPlaneXZ ? point_in_polygon_xz : point_in_polygon_xy;
    for (int32_t i = 0; i < source.outline_count; ++i)
        if (inside(source.outline_sizes[i], source.outline_starts[i], point)) return true;
    return false;
}

}  // namespace

void set_container(ContainerSpawnSource& source, int32_t container_handle) {
    source.container = container_handle;
}

void set_ref_plane(ContainerSpawnSource& source, int32_t ref_plane) {
    source.ref_plane = ref_plane;
}

void set_coord_mode(ContainerSpawnSource& source, int32_t coord_mode) {
    source.coord_mode = coord_mode;
}

void set_depth(ContainerSpawnSource& source, float depth) {
    source.depth = depth;
}

bool is_valid(const ContainerSpawnSource& source) {
    return _api__object_valid(source.container) != 0;
}

void refresh(ContainerSpawnSource& source) {
    source.outline_count = 0;
    if (!is_valid(source)) return;
    const int32_t geometry_handle = host::container_geometry(source.container);
    if (_api__object_valid(geometry_handle) == 0) {
        std::fputs("Geom not valid\n", stdout);
        return;
    }
    source.plugin_mode = request(geometry_handle, TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, nullptr) ? 1 : 0;
    if (!source.plugin_mode) read_meshes(source, geometry_handle);
}

bool is_usable(const ContainerSpawnSource& source) {
    if (source.plugin_mode) return true;
    const Vector3 extent = source.bbox_max - source.bbox_min;
    const float along = source.ref_plane == kRefPlaneXZ ? extent.z : extent.y;
    return !(extent.x < kMinExtent) && !(along < kMinExtent);
}

void release(ContainerSpawnSource& source) {
    std::free(source.outline_sizes);
    std::free(source.outline_starts);
    std::free(source.vertex_store);
    source = ContainerSpawnSource{};
}

bool ask_spawn_point(const ContainerSpawnSource& source, Vector3& point) {
    return ask_geometry(source, TOVU_REQUEST_NEW_SPAWN_POINT, point);
}

bool ask_is_inside(const ContainerSpawnSource& source, Vector3 point) {
    return ask_geometry(source, TOVU_REQUEST_IS_INSIDE, point);
}

InsideTest open_inside_test(const ContainerSpawnSource& source, OutlineIndex* index) {
    if (source.plugin_mode) return {InsideTest::kAskPlugin, &source, nullptr};
    if (!is_valid(source)) return {InsideTest::kContainerGone, &source, nullptr};
    if (index != nullptr && update_index(*index, source)) return {InsideTest::kTestIndex, &source, index};
    return {InsideTest::kTestOutlines, &source, nullptr};
}

bool contains(const InsideTest& test, Vector3 point) {
    switch (test.way) {
        case InsideTest::kContainerGone:
            return false;
        case InsideTest::kAskPlugin:
            return ask_is_inside(*test.source, point);
        case InsideTest::kTestIndex:
            return index_contains(*test.index, point.x, test.source->ref_plane == kRefPlaneXZ ? point.z : point.y);
        case InsideTest::kTestOutlines:
            break;
    }
    return inside_an_outline(*test.source, point);
}

}  // namespace tovu
