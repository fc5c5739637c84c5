// The geometry of a container: meshes, or an instance of a plug-in.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "container.h"
#include "mesh.h"

namespace stage {

struct Instance;  // of a plug-in: stage/plugins/instance.h

/// A container's geometry: an instance, or any number of meshes.
struct Geometry {
    int32_t handle = kNoObject;
    int32_t container_handle = kNoObject;
    std::vector<Mesh> meshes;
    std::shared_ptr<Instance> instance;                            // null for meshes
    void (*clean_up)(Stage& stage, Instance& instance) = nullptr;  // called before an instance is destroyed
    int64_t changed_count = 0;  // number of changes reported by its plug-in, and of new meshes

    // Mesh access.
    std::vector<int32_t> first_cursors;  // the vertex cursor of each mesh's first vertex
    int64_t access_frame = INT64_MIN;    // the frame of the last _api__get_geom_geomod
    bool access_begun = false;           // _api__geomod_init was called since then
};

/// Gives the container these meshes. They replace earlier meshes under the same handle, so that a geometry can deform;
/// an instance is removed first. Returns the geometry's handle; kNoObject when it is no container, the instance is
/// running, or all object numbers are used.
STAGE_EXPORT int32_t set_mesh_geometry(Stage& stage, int32_t container_handle, std::vector<Mesh> meshes);

/// Destroys the geometry of the container. An instance is cleaned up first. False if there is no geometry, or if an
/// entry point of that instance is running.
STAGE_EXPORT bool remove_geometry(Stage& stage, int32_t container_handle);

/// Null for anything but a live geometry. The pointer stays valid until the geometry is removed.
STAGE_EXPORT Geometry* find_geometry(Stage& stage, int32_t geometry_handle);
STAGE_EXPORT const Geometry* find_geometry(const Stage& stage, int32_t geometry_handle);

/// The geometry that the container carries, or null.
STAGE_EXPORT Geometry* geometry_of(Stage& stage, int32_t container_handle);
STAGE_EXPORT const Geometry* geometry_of(const Stage& stage, int32_t container_handle);

}  // namespace stage
