// The camera that renders the scene.
#include <fmt/format.h>
#include <tovu/host_services.h>

#include "serve.h"

namespace stage {
namespace {

int32_t named_camera(const Service& service, int32_t scene, const char* name, int32_t type) {
    if (scene == kNoObject && std::string_view(text_of(name)) == "RENDERCAMERA" && type == TOVU_OBJECT_CAMERA)
        return service.stage.camera_handle;
    service.complain(fmt::format("there is no camera '{}' of scene {} and type {}; 'RENDERCAMERA', -1 and {} are right",
                                 text_of(name), scene, type, int{TOVU_OBJECT_CAMERA}));
    return kNoObject;
}

void pan(const Service& service, int32_t handle, float* degrees) {
    if (const Camera* camera = service.camera(handle)) service.put(degrees, float{camera->pan_degrees});
}

void tilt(const Service& service, int32_t handle, float* degrees) {
    if (const Camera* camera = service.camera(handle)) service.put(degrees, float{camera->tilt_degrees});
}

void view(const Service& service, int32_t handle, float* matrix) {
    if (const Camera* camera = service.camera(handle)) service.put_matrix(matrix, view_matrix(*camera));
}

void position_object(const Service& service, int32_t handle, int32_t* object) {
    if (service.camera(handle)) service.put(object, make_handle(ObjectKind::kCameraPosition, number_of(handle)));
}

void direction_object(const Service& service, int32_t handle, int32_t* object) {
    if (service.camera(handle)) service.put(object, make_handle(ObjectKind::kCameraDirection, number_of(handle)));
}

void numbers_behind(const Service& service, int32_t object, float* x, float* y, float* z) {
    const Camera& camera = service.stage.camera;
    if (object == make_handle(ObjectKind::kCameraPosition, kCameraNumber))
        service.put(x, y, z, camera.position);
    else if (object == make_handle(ObjectKind::kCameraDirection, kCameraNumber))
        service.put(x, y, z, view_direction(camera));
    else
        service.complain_about(object, ObjectKind::kCameraPosition);
}

}  // namespace
}  // namespace stage

using namespace stage;

int32_t _api__get_cameraid(int32_t scene, const char* name, int32_t type) {
    return serve<kNoObject>(__func__, &Overrides::get_cameraid, named_camera, scene, name, type);
}

void _api__get_camera_pan(int32_t camera, float* degrees) {
    serve(__func__, &Overrides::get_camera_pan, pan, camera, degrees);
}

void _api__get_camera_tilt(int32_t camera, float* degrees) {
    serve(__func__, &Overrides::get_camera_tilt, tilt, camera, degrees);
}

void _api__get_camera_view_matrix(int32_t camera, float* matrix) {
    serve(__func__, &Overrides::get_camera_view_matrix, view, camera, matrix);
}

void _api__get_camera_position(int32_t camera, int32_t* object) {
    serve(__func__, &Overrides::get_camera_position, position_object, camera, object);
}

void _api__get_camera_direction(int32_t camera, int32_t* object) {
    serve(__func__, &Overrides::get_camera_direction, direction_object, camera, object);
}

void _api__get_position(int32_t object, float* x, float* y, float* z) {
    serve(__func__, &Overrides::get_position, numbers_behind, object, x, y, z);
}
