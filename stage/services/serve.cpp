#include "serve.h"

#include <fmt/format.h>

#include <algorithm>

namespace stage {
namespace {

const char* kind_name(ObjectKind kind) {
    switch (kind) {
        case ObjectKind::kContainer:
            return "container";
        case ObjectKind::kGeometry:
            return "geometry";
        case ObjectKind::kCamera:
            return "camera";
        case ObjectKind::kImage:
            return "image";
        case ObjectKind::kMeshAccess:
            return "mesh access";
        case ObjectKind::kCameraPosition:
            return "position";
        case ObjectKind::kCameraDirection:
            return "direction";
        case ObjectKind::kEvent:
            return "profiling event";
    }
    return nullptr;
}

}  // namespace

void Service::complain_about(int32_t handle, ObjectKind wanted) const {
    if (handle == kNoObject) return;
    const ObjectKind kind = handle < 0 ? ObjectKind{} : static_cast<ObjectKind>(handle >> 24);
    if (kind == wanted)
        complain(fmt::format("{} #{} does not exist", kind_name(kind), number_of(handle)));
    else if (kind_name(kind))
        complain(fmt::format("handle {} is that of a {}, not of a {}", handle, kind_name(kind), kind_name(wanted)));
    else
        complain(fmt::format("{} is not a handle", handle));
}

const Container* Service::container(int32_t handle) const {
    const Container* found = find_container(stage, handle);
    if (!found) complain_about(handle, ObjectKind::kContainer);
    return found;
}

Geometry* Service::geometry(int32_t handle) const {
    Geometry* found = find_geometry(stage, handle);
    if (!found) complain_about(handle, ObjectKind::kGeometry);
    return found;
}

const Image* Service::image(int32_t handle) const {
    const Image* found = find_image(stage, handle);
    if (!found) complain_about(handle, ObjectKind::kImage);
    return found;
}

const Camera* Service::camera(int32_t handle) const {
    if (handle == stage.camera_handle) return &stage.camera;
    complain_about(handle, ObjectKind::kCamera);
    return nullptr;
}

void Service::put_matrix(float* out, const Matrix& matrix) const {
    if (out)
        std::copy(matrix.begin(), matrix.end(), out);
    else
        complain("an out value has no address");
}

}  // namespace stage
