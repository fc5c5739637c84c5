#include "serve.h"

#include <fmt/format.h>

#include <algorithm>

namespace stage {
namespace {

const char* kind_name(ObjectKind kind) {
    switch (kind) {
        case ObjectKind::Container:
            return "container";
        case ObjectKind::Geometry:
            return "geometry";
        case ObjectKind::Camera:
            return "camera";
        case ObjectKind::Image:
            return "image";
        case ObjectKind::MeshAccess:
            return "mesh access";
        case ObjectKind::CameraPosition:
            return "position";
        case ObjectKind::CameraDirection:
            return "direction";
        case ObjectKind::Event:
            return "profiling event";
    }
    return nullptr;
}

}  // namespace

void Service::complain_about(int32_t handle, ObjectKind wanted) const {
    if (handle == kNoObject) return;
    const ObjectKind kind = handle < 0 ? ObjectKind{} : static_cast<ObjectKind>(handle >> 24);
    if (kind == wanted)
        complain(fmt::format("{} #{} is gone or never was", kind_name(kind), number_of(handle)));
    else if (kind_name(kind))
        complain(fmt::format("handle {} is that of a {}, not of a {}", handle, kind_name(kind), kind_name(wanted)));
    else
        complain(fmt::format("{} is no handle", handle));
}

const Container* Service::container(int32_t handle) const {
    const Container* found = find_container(stage, handle);
    if (!found) complain_about(handle, ObjectKind::Container);
    return found;
}

Geometry* Service::geometry(int32_t handle) const {
    Geometry* found = find_geometry(stage, handle);
    if (!found) complain_about(handle, ObjectKind::Geometry);
    return found;
}

const Image* Service::image(int32_t handle) const {
    const Image* found = find_image(stage, handle);
    if (!found) complain_about(handle, ObjectKind::Image);
    return found;
}

const Camera* Service::camera(int32_t handle) const {
    if (handle == stage.camera_handle) return &stage.camera;
    complain_about(handle, ObjectKind::Camera);
    return nullptr;
}

void Service::put_matrix(float* out, const Matrix& matrix) const {
    if (out)
        std::copy(matrix.begin(), matrix.end(), out);
    else
        complain("an out value has no address");
}

}  // namespace stage
