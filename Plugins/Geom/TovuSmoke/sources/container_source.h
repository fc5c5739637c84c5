// Spawn points and an inside test from the shape of another container.
#pragma once

#include <cstdint>

#include "../math/vector.h"

namespace tovu {

/// The container named by `spawn_cont_name` and a snapshot of its outlines. Order and types are fixed.
struct ContainerSpawnSource {
    int32_t container = -1;
    uint8_t plugin_mode = 0;  // the container's geometry supplies points and inside tests itself
    int32_t ref_plane = 0;    // outlines lie in 0: x-y, 1: x-z
    int32_t coord_mode = 1;   // vertices are stored 0: as the mesh gives them, 1: mapped through the container's matrix
    Vector3 bbox_min{};       // of the stored vertices
    Vector3 bbox_max{};
    float depth = 0;          // extent of the random third coordinate
    int32_t outline_capacity = 0;  // entries allocated in the two arrays below
    int32_t outline_count = 0;
    int32_t* outline_sizes = nullptr;    // vertices of each outline
    Vector3** outline_starts = nullptr;  // where each outline begins in vertex_store
    int32_t vertex_capacity = 0;         // entries allocated in vertex_store
    Vector3* vertex_store = nullptr;     // outline after outline
};

}  // namespace tovu
