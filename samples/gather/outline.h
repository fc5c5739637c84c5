// The shape that smoke gathers into: the outlines of a container's meshes.
#pragma once

#include <tovu/vector3.h>

#include <cstdint>

namespace gather {

struct Edge {
    Vector3 from;
    Vector3 to;
    double end;  // length of the whole outline up to here
};

/// Every mesh of the target as one closed outline, in the coordinates of the smoke's particles.
struct Outline {
    Edge* edges = nullptr;     // owned
    int32_t* order = nullptr;  // owned, for sorting as many edges
    int32_t capacity = 0;
    int32_t count = 0;  // 0: no shape
    double length = 0;
    float low_x = 0;
    float high_x = 0;
};

/// Reads the meshes of the container anew, since it may have moved or changed. Where there is no such container, no
/// mesh or no memory, the outline is empty. to_smoke_handle: the container whose coordinates the edges are wanted in;
/// -1 for those of the world.
void read_outline(Outline& outline, const char* container_name, int32_t to_smoke_handle);
void free_outline(Outline& outline);

struct Place {
    Vector3 point;
    float across;  // 0 to 1: from the outline's smallest x to its largest
};

/// The place of the particle with this number, 0 or more. Whatever number of them there is, they lie evenly along the
/// outline, which must not be empty.
Place place_of(const Outline& outline, int32_t number);

}  // namespace gather
