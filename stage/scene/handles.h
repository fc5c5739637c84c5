// Handles of objects. A handle contains the kind and the number of an object.
#pragma once

#include <cstdint>

namespace stage {

/// Kinds of object. Containers, geometries and cameras have the code by which plug-ins look them up.
enum class ObjectKind : int32_t {
    kContainer = 2,
    kGeometry = 50,
    kCamera = 62,
    kImage = 70,
    kMeshAccess = 80,       // carries the number of its geometry
    kCameraPosition = 90,   // carries the number of its camera
    kCameraDirection = 91,  // carries the number of its camera
    kEvent = 100,           // profiling events count for the whole process, apart from the scene's objects
};

constexpr int32_t kNoObject = -1;
constexpr int32_t kMaxObjectNumber = 0xFFFFFF;
constexpr int32_t kCameraNumber = 0;  // fixed, so that the first container is #1

/// The kind is in the bits from 24 up: handles of different kinds are never equal.
constexpr int32_t make_handle(ObjectKind kind, int32_t number) {
    return static_cast<int32_t>(kind) << 24 | number;
}
/// The number that users write after a '#'. Meaningless for a negative handle.
constexpr int32_t number_of(int32_t handle) {
    return handle & kMaxObjectNumber;
}
constexpr bool has_kind(int32_t handle, ObjectKind kind) {
    return handle >= 0 && handle >> 24 == static_cast<int32_t>(kind);
}

}  // namespace stage
