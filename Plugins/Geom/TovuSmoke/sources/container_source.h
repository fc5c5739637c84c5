// Spawn points and an inside test from the shape of another container.
#pragma once

#include <cstdint>

#include "../math/vector.h"

namespace tovu {

struct OutlineIndex;

/// The container named by `spawn_cont_name` and a snapshot of its outlines: every mesh of its geometry is one closed
/// outline, its vertices in stored order. Owns the three arrays, which never shrink. Order and types are fixed.
struct ContainerSpawnSource {
    int32_t container = -1;
    uint8_t plugin_mode = 0;  // the container's geometry supplies points and inside tests itself
    int32_t ref_plane = 0;    // outlines lie in 0: x-y, 1: x-z
    int32_t coord_mode = 1;   // vertices are stored 0: as the mesh gives them, 1: mapped through the container's matrix
    Vector3 bbox_min{};       // of the stored vertices
    Vector3 bbox_max{};
    float depth = 0;                     // extent of the random third coordinate
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

/// Reads the outlines anew, or finds that the geometry is a plug-in that supplies spawn points. The number of outlines
/// is held to the total number of vertices that the host gives, at least 1; vertices beyond the store are not read. A
/// refresh that has to stop early (no geometry, no mesh access, no meshes, no memory) leaves no outline and keeps the
/// rest; the first two print a line on standard output.
void refresh(ContainerSpawnSource& source);

/// Whether points can be picked: always of a plug-in, else when the box of the outlines is at least kLeastExtent along
/// both axes of the reference plane. An extent that is not a number passes.
bool is_usable(const ContainerSpawnSource& source);

/// Frees the arrays.
void release(ContainerSpawnSource& source);

/// Asks the geometry of a source in plug-in mode for a spawn point, or whether a point is inside. False when the
/// container or its geometry is gone, or the answer is no.
bool ask_spawn_point(const ContainerSpawnSource& source, Vector3& point);
bool ask_is_inside(const ContainerSpawnSource& source, Vector3 point);

/// The inside test for one pass over points: what can be asked once is asked when it is opened.
struct InsideTest {
    enum Way { kContainerGone, kAskPlugin, kTestOutlines, kTestIndex } way;
    const ContainerSpawnSource* source;
    OutlineIndex* index;
};

/// index: brought up to date here where the outlines are large enough to need one; may be null.
InsideTest open_inside_test(const ContainerSpawnSource& source, OutlineIndex* index);

/// Whether a point lies inside one outline at least, by the even-odd rule in the reference plane, each tested alone.
bool contains(const InsideTest& test, Vector3 point);

}  // namespace tovu
