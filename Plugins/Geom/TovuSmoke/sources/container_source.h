// Spawn points and an inside test from the shape of another container.
#pragma once

#include <cstdint>

#include "../math/vector.h"

namespace tovu {

struct OutlineIndex;

/// The container named by `spawn_cont_name` and a copy of its outlines: each mesh of its geometry is one closed
/// outline, its vertices in stored order. Owns the three arrays, which never shrink. Order and types of the fields are
/// fixed.
struct ContainerSpawnSource {
    int32_t container = -1;
    uint8_t plugin_mode = 0;  // the container's geometry plug-in supplies points and inside tests
    int32_t ref_plane = 0;    // outlines lie in 0: x-y, 1: x-z
    int32_t coord_mode = 1;   // vertices are stored in 0: container coordinates, 1: world coordinates
    Vector3 bbox_min{};       // of the stored vertices
    Vector3 bbox_max{};
    float depth = 0;                     // range of the random third coordinate
    int32_t outline_capacity = 0;        // entries allocated in the two arrays below
    int32_t outline_count = 0;           // outlines read by the last refresh
    int32_t* outline_sizes = nullptr;    // vertices of each outline
    Vector3** outline_starts = nullptr;  // where each outline begins in vertex_store
    int32_t vertex_capacity = 0;         // entries allocated in vertex_store
    Vector3* vertex_store = nullptr;     // outline after outline, without gaps
};

/// Stores the handle; takes effect at the next refresh.
void set_container(ContainerSpawnSource& source, int32_t container_handle);

/// For the points picked and tested from now on.
void set_ref_plane(ContainerSpawnSource& source, int32_t ref_plane);
void set_depth(ContainerSpawnSource& source, float depth);

/// For the vertices that the next refresh reads.
void set_coord_mode(ContainerSpawnSource& source, int32_t coord_mode);

/// Whether the host still knows the container.
bool is_valid(const ContainerSpawnSource& source);

/// Reads the outlines again, or finds that the geometry is a plug-in that supplies spawn points. The number of outlines
/// is clamped to the total number of vertices that the host reports, at least 1. Vertices beyond that total are not
/// read. Without geometry, mesh access, meshes or memory there are no outlines afterwards and the other fields stay; a
/// missing geometry or mesh access prints a line on standard output.
void refresh(ContainerSpawnSource& source);

/// Whether points can be picked: always from a plug-in, else if the bounding box of the outlines is at least kMinExtent
/// along both axes of the reference plane. An extent of NaN passes.
bool is_usable(const ContainerSpawnSource& source);

/// Frees the arrays.
void release(ContainerSpawnSource& source);

/// Asks the geometry plug-in for a spawn point, or whether a point is inside. False if the container or its geometry is
/// gone or the answer is no.
bool ask_spawn_point(const ContainerSpawnSource& source, Vector3& point);
bool ask_is_inside(const ContainerSpawnSource& source, Vector3 point);

/// The inside test for a series of points. `open_inside_test` makes all host calls that do not depend on the point.
struct InsideTest {
    enum Way { kContainerGone, kAskPlugin, kTestOutlines, kTestIndex } way;
    const ContainerSpawnSource* source;
    OutlineIndex* index;
};

/// index: updated here if the outlines have enough edges; may be null.
InsideTest open_inside_test(const ContainerSpawnSource& source, OutlineIndex* index);

/// Whether a point is inside at least one outline. Each outline is tested alone, by the even-odd rule in the reference
/// plane.
bool contains(const InsideTest& test, Vector3 point);

}  // namespace tovu
