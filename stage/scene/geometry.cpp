#include "geometry.h"

#include "stage.h"

namespace stage {
namespace {

// Vertex cursors number the vertices of all meshes from 1. After each mesh one number is unused: a cursor that has
// passed the mesh's last vertex holds it, and does not read the next mesh's first vertex by mistake.
std::vector<int32_t> first_cursors_of(const std::vector<Mesh>& meshes) {
    std::vector<int32_t> cursors;
    int32_t next = 1;
    for (const Mesh& mesh : meshes) {
        cursors.push_back(next);
        next += static_cast<int32_t>(mesh.vertices.size()) + 1;
    }
    return cursors;
}

Geometry* add_geometry(Stage& stage, Container& container) {
    const int32_t handle = new_handle(stage, ObjectKind::kGeometry);
    if (handle == kNoObject) return nullptr;
    Geometry& geometry = stage.geometries[handle];
    geometry.handle = handle;
    geometry.container_handle = container.handle;
    container.geometry_handle = handle;
    return &geometry;
}

}  // namespace

int32_t set_mesh_geometry(Stage& stage, int32_t container_handle, std::vector<Mesh> meshes) {
    Container* container = find_container(stage, container_handle);
    if (!container) return kNoObject;
    Geometry* geometry = find_geometry(stage, container->geometry_handle);
    if (geometry && geometry->instance) {
        if (!remove_geometry(stage, container_handle)) return kNoObject;
        geometry = nullptr;
    }
    if (!geometry) geometry = add_geometry(stage, *container);
    if (!geometry) return kNoObject;
    geometry->first_cursors = first_cursors_of(meshes);
    geometry->meshes = std::move(meshes);
    ++geometry->changed_count;
    return geometry->handle;
}

bool remove_geometry(Stage& stage, int32_t container_handle) {
    Geometry* geometry = geometry_of(stage, container_handle);
    if (!geometry) return false;
    if (Instance* instance = geometry->instance.get()) {
        if (is_running(stage, *instance)) return false;
        geometry->clean_up(stage, *instance);
        std::erase(stage.instance_handles, geometry->handle);
    }
    find_container(stage, container_handle)->geometry_handle = kNoObject;
    find_container(stage, container_handle)->bounding_box.reset();
    stage.geometries.erase(geometry->handle);
    return true;
}

const Geometry* find_geometry(const Stage& stage, int32_t geometry_handle) {
    const auto found = stage.geometries.find(geometry_handle);
    return found == stage.geometries.end() ? nullptr : &found->second;
}

Geometry* find_geometry(Stage& stage, int32_t geometry_handle) {
    return const_cast<Geometry*>(find_geometry(std::as_const(stage), geometry_handle));
}

const Geometry* geometry_of(const Stage& stage, int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    return container ? find_geometry(stage, container->geometry_handle) : nullptr;
}

Geometry* geometry_of(Stage& stage, int32_t container_handle) {
    return const_cast<Geometry*>(geometry_of(std::as_const(stage), container_handle));
}

}  // namespace stage
