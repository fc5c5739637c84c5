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
    std::vector<Edge> edges;  // empty: no shape
    double length = 0;
    float low_x = INFINITY;
    float high_x = -INFINITY;
};

/// Reads the meshes of the container's geometry. Without a geometry (-1) or a mesh the outline has no edges.
/// smoke_handle: the container whose coordinates the edges get; -1 for world coordinates.
Outline read_outline(int32_t container_handle, int32_t geometry_handle, int32_t smoke_handle);

struct Place {
    Vector3 point;
    float across;  // 0 to 1: from the outline's smallest x to its largest
};

/// The place of the particle with this number, 0 or more; nothing if the outline has no edges. Consecutive numbers are
/// distributed evenly along the outline.
std::optional<Place> place_of(const Outline& outline, int32_t number);

}  // namespace gather
