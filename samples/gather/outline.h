// The shape that smoke gathers into: the outlines of a container's meshes.
#pragma once

#include <tovu/vector3.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace gather {

struct Edge {
    Vector3 from;
    Vector3 to;
    double length;
    double start;  // length of all edges before this one
};

/// Every mesh of the target as one closed outline, in the coordinates of the smoke's particles.
struct Outline {
    std::vector<Edge> edges;  // none: no shape
    double length = 0;
    float low_x = INFINITY;
    float high_x = -INFINITY;
};

/// Reads the meshes of the container's geometry. Without a geometry (-1) or a mesh the outline has no edges.
/// smoke_handle: the container in whose coordinates the edges are wanted; -1 for the world's.
Outline read_outline(int32_t container_handle, int32_t geometry_handle, int32_t smoke_handle);

struct Place {
    Vector3 point;
    float across;  // 0 to 1: from the outline's smallest x to its largest
};

/// The place of the particle with this number, 0 or more; nothing when the outline has no edges. Any run of numbers is
/// spread evenly along the outline.
std::optional<Place> place_of(const Outline& outline, int32_t number);

}  // namespace gather
