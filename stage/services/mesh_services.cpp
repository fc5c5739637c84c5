// Access to the meshes of a geometry, vertex by vertex. A mesh cursor is the mesh's index + 1, so that an unset cursor
// of 0 is reported. Vertex cursors: see scene/geometry.cpp.
#include <fmt/format.h>
#include <tovu/host_services.h>

#include <algorithm>

#include "serve.h"

namespace stage {
namespace {

int32_t mesh_count(const Geometry& geometry) {
    return static_cast<int32_t>(geometry.meshes.size());
}

int32_t vertex_count(const Geometry& geometry, int32_t mesh_index) {
    return static_cast<int32_t>(geometry.meshes[static_cast<size_t>(mesh_index)].vertices.size());
}

int32_t first_cursor(const Geometry& geometry, int32_t mesh_index) {
    return geometry.first_cursors[static_cast<size_t>(mesh_index)];
}

void detail(const Service& service, int32_t handle, int32_t* out) {
    if (service.geometry(handle)) service.put(out, int32_t{0});  // there are no levels of detail
}

void open_access(const Service& service, int32_t handle, int32_t kind, int32_t, int32_t* out) {
    Geometry* geometry = service.geometry(handle);
    if (!geometry) return;
    if (kind != 2) service.complain(fmt::format("there is no mesh access of kind {}; 2 is right", kind));
    const bool has_meshes = kind == 2 && !geometry->instance;
    if (has_meshes) {
        geometry->access_frame = service.stage.clock.frame;
        geometry->access_begun = false;
    }
    service.put(out, has_meshes ? make_handle(ObjectKind::kMeshAccess, number_of(handle)) : 0);
}

/// The geometry of a mesh access that was opened in this frame, or null after a complaint.
Geometry* opened(const Service& service, int32_t access) {
    Geometry* geometry = has_kind(access, ObjectKind::kMeshAccess)
                             ? find_geometry(service.stage, make_handle(ObjectKind::kGeometry, number_of(access)))
                             : nullptr;
    if (!geometry || geometry->instance) {
        service.complain_about(access, ObjectKind::kMeshAccess);
        return nullptr;
    }
    if (geometry->access_frame != service.stage.clock.frame) {
        service.complain("the mesh access is of an earlier frame");
        return nullptr;
    }
    return geometry;
}

const Geometry* begun(const Service& service, int32_t access) {
    const Geometry* geometry = opened(service, access);
    if (!geometry || geometry->access_begun) return geometry;
    service.complain("the mesh access was not begun with _api__geomod_init");
    return nullptr;
}

void begin_access(const Service& service, int32_t access) {
    if (Geometry* geometry = opened(service, access)) geometry->access_begun = true;
}

void info(const Service& service, int32_t access, int32_t* vertices, int32_t* meshes, uint8_t* flag_0, uint8_t* flag_1,
          uint8_t* flag_2) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    int32_t total = 0;
    for (int32_t i = 0; i < mesh_count(*geometry); ++i) total += vertex_count(*geometry, i);
    service.put(vertices, total);
    service.put(meshes, mesh_count(*geometry));
    for (uint8_t* flag : {flag_0, flag_1, flag_2}) service.put(flag, uint8_t{0});
}

void goto_mesh(const Service& service, int32_t access, int32_t index, int32_t* cursor) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    if (index < 0 || index >= mesh_count(*geometry))
        return service.complain(fmt::format("there is no mesh {} among {}", index, mesh_count(*geometry)));
    service.put(cursor, index + 1);
}

/// The index of the mesh that a cursor points to, or -1 after a complaint.
int32_t mesh_under(const Service& service, const Geometry& geometry, int32_t cursor) {
    if (cursor >= 1 && cursor <= mesh_count(geometry)) return cursor - 1;
    service.complain(fmt::format("mesh cursor {} stands on no mesh", cursor));
    return -1;
}

void next_mesh(const Service& service, int32_t access, int32_t* cursor) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    if (!cursor) return service.complain("an out value has no address");
    if (mesh_under(service, *geometry, *cursor) >= 0) ++*cursor;
}

void mesh_vertices(const Service& service, int32_t access, int32_t mesh_cursor, int32_t* count) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    const int32_t mesh = mesh_under(service, *geometry, mesh_cursor);
    if (mesh >= 0) service.put(count, vertex_count(*geometry, mesh));
}

void goto_vertex(const Service& service, int32_t access, int32_t mesh_cursor, int32_t index, int32_t* cursor) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    const int32_t mesh = mesh_under(service, *geometry, mesh_cursor);
    if (mesh < 0) return;
    // Index 0 is valid for a mesh without vertices too: a loop over its vertices starts there and ends at once.
    if (index < 0 || index >= std::max(vertex_count(*geometry, mesh), 1))
        return service.complain(fmt::format("there is no vertex {} among {}", index, vertex_count(*geometry, mesh)));
    service.put(cursor, first_cursor(*geometry, mesh) + index);
}

void next_vertex(const Service& service, int32_t access, int32_t mesh_cursor, int32_t* cursor) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    if (!cursor) return service.complain("an out value has no address");
    const int32_t mesh = mesh_under(service, *geometry, mesh_cursor);
    if (mesh < 0) return;
    const int32_t index = *cursor - first_cursor(*geometry, mesh);
    if (index < 0 || index >= vertex_count(*geometry, mesh))
        return service.complain(fmt::format("vertex cursor {} stands on no vertex of its mesh", *cursor));
    ++*cursor;
}

void vertex(const Service& service, int32_t access, int32_t cursor, float* x, float* y, float* z) {
    const Geometry* geometry = begun(service, access);
    if (!geometry) return;
    const auto& cursors = geometry->first_cursors;
    const auto mesh =
        static_cast<int32_t>(std::upper_bound(cursors.begin(), cursors.end(), cursor) - cursors.begin()) - 1;
    const int32_t index = mesh < 0 ? -1 : cursor - first_cursor(*geometry, mesh);
    // The first vertex of a mesh without vertices is not reported; the out values stay unchanged.
    if (index == 0 && vertex_count(*geometry, mesh) == 0) return;
    if (index < 0 || index >= vertex_count(*geometry, mesh))
        return service.complain(fmt::format("vertex cursor {} stands on no vertex", cursor));
    service.put(x, y, z, geometry->meshes[static_cast<size_t>(mesh)].vertices[static_cast<size_t>(index)]);
}

}  // namespace
}  // namespace stage

using namespace stage;

void _api__get_geom_detail(int32_t geometry, int32_t* out) {
    serve(__func__, &Overrides::get_geom_detail, detail, geometry, out);
}

void _api__get_geom_geomod(int32_t geometry, int32_t kind, int32_t level, int32_t* mesh_access) {
    serve(__func__, &Overrides::get_geom_geomod, open_access, geometry, kind, level, mesh_access);
}

void _api__geomod_init(int32_t mesh_access) {
    serve(__func__, &Overrides::geomod_init, begin_access, mesh_access);
}

void _api__geomod_get_info(int32_t mesh_access, int32_t* vertices, int32_t* meshes, uint8_t* flag_0, uint8_t* flag_1,
                           uint8_t* flag_2) {
    serve(__func__, &Overrides::geomod_get_info, info, mesh_access, vertices, meshes, flag_0, flag_1, flag_2);
}

void _api__geomod_goto_mesh(int32_t mesh_access, int32_t mesh_index, int32_t* mesh_cursor) {
    serve(__func__, &Overrides::geomod_goto_mesh, goto_mesh, mesh_access, mesh_index, mesh_cursor);
}

void _api__geomod_next_mesh(int32_t mesh_access, int32_t* mesh_cursor) {
    serve(__func__, &Overrides::geomod_next_mesh, next_mesh, mesh_access, mesh_cursor);
}

void _api__geomod_get_num_mesh_verices(int32_t mesh_access, int32_t mesh_cursor, int32_t* count) {
    serve(__func__, &Overrides::geomod_get_num_mesh_verices, mesh_vertices, mesh_access, mesh_cursor, count);
}

void _api__geomod_goto_vertex(int32_t mesh_access, int32_t mesh_cursor, int32_t vertex_index, int32_t* vertex_cursor) {
    serve(__func__, &Overrides::geomod_goto_vertex, goto_vertex, mesh_access, mesh_cursor, vertex_index, vertex_cursor);
}

void _api__geomod_next_vertex(int32_t mesh_access, int32_t mesh_cursor, int32_t* vertex_cursor) {
    serve(__func__, &Overrides::geomod_next_vertex, next_vertex, mesh_access, mesh_cursor, vertex_cursor);
}

void _api__geomod_get_vertex(int32_t mesh_access, int32_t vertex_cursor, float* x, float* y, float* z) {
    serve(__func__, &Overrides::geomod_get_vertex, vertex, mesh_access, vertex_cursor, x, y, z);
}
