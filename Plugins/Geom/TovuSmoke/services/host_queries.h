// Host services with out parameters as functions that return values. A host leaves the out values of an unknown object
// unchanged, so each is set before the call: handles to -1, scaling to 1, matrices to the identity, the rest to 0.
#pragma once

#include "../host/host_services.h"
#include "../math/matrix.h"

namespace tovu::host {

inline Vector3 absolute_position(int32_t container_handle) {
    Vector3 v{};
    _api__container_get_absolute_position(container_handle, &v.x, &v.y, &v.z);
    return v;
}
inline Vector3 absolute_rotation(int32_t container_handle) {
    Vector3 v{};
    _api__container_get_absolute_rotation(container_handle, &v.x, &v.y, &v.z);
    return v;
}
inline Vector3 absolute_scaling(int32_t container_handle) {
    Vector3 v{1, 1, 1};
    _api__container_get_absolute_scaling(container_handle, &v.x, &v.y, &v.z);
    return v;
}
inline Matrix4 transformation_matrix(int32_t container_handle) {
    Matrix4 matrix;
    _api__container_get_transformation_matrix(container_handle, matrix.m);
    return matrix;
}
inline Matrix4 inverse_matrix(int32_t container_handle) {
    Matrix4 matrix;
    _api__container_get_inverse_matrix(container_handle, matrix.m);
    return matrix;
}
inline int32_t container_geometry(int32_t container_handle) {
    int32_t geometry_handle = -1;
    _api__container_get_geometry(container_handle, &geometry_handle);
    return geometry_handle;
}

inline int32_t render_camera() {
    return _api__get_cameraid(-1, "RENDERCAMERA", TOVU_OBJECT_CAMERA);
}
inline float camera_pan(int32_t camera_handle) {
    float degrees = 0;
    _api__get_camera_pan(camera_handle, &degrees);
    return degrees;
}
inline float camera_tilt(int32_t camera_handle) {
    float degrees = 0;
    _api__get_camera_tilt(camera_handle, &degrees);
    return degrees;
}
inline Matrix4 camera_view_matrix(int32_t camera_handle) {
    Matrix4 matrix;
    _api__get_camera_view_matrix(camera_handle, matrix.m);
    return matrix;
}
/// The numbers behind a position or direction handle.
inline Vector3 position_of(int32_t object_handle) {
    Vector3 v{};
    _api__get_position(object_handle, &v.x, &v.y, &v.z);
    return v;
}
inline Vector3 camera_position(int32_t camera_handle) {
    int32_t object_handle = -1;
    _api__get_camera_position(camera_handle, &object_handle);
    return position_of(object_handle);
}
inline Vector3 camera_direction(int32_t camera_handle) {
    int32_t object_handle = -1;
    _api__get_camera_direction(camera_handle, &object_handle);
    return position_of(object_handle);
}

inline bool is_on_air() {
    uint8_t on_air = 0;
    _api__pellor_get_is_on_air(&on_air);
    return on_air != 0;
}
inline bool is_post_recording() {
    uint8_t recording = 0;
    _api__pellor_get_is_post_recording(&recording);
    return recording != 0;
}
inline float post_current_time() {
    float seconds = 0;
    _api__pellor_get_post_current_time(&seconds);
    return seconds;
}
inline int32_t retrace_counter() {
    int32_t counter = 0;
    _api__pellor_get_retrace_counter(&counter);
    return counter;
}
inline double frame_period() {
    double seconds = 0;
    _api__pellor_get_refreshrate(&seconds);
    return seconds;
}

}  // namespace tovu::host
