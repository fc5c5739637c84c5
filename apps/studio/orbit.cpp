#include "orbit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tovu {

namespace {

constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

void move_along_view(stage::Camera& camera, float by) {
    const Vector3 direction = stage::view_direction(camera);
    camera.position.x += direction.x * by;
    camera.position.y += direction.y * by;
    camera.position.z += direction.z * by;
}

}  // namespace

stage::Camera camera_of(const stage::CameraDescription& description) {
    const auto& at = description.position;
    stage::Camera camera{
        {at[0], at[1], at[2]}, description.pan, description.tilt, description.roll, description.field_of_view};
    if (description.look_at) {
        const auto& to = *description.look_at;
        const double x = static_cast<double>(to[0]) - at[0], y = static_cast<double>(to[1]) - at[1],
                     z = static_cast<double>(to[2]) - at[2];
        camera.pan_degrees = static_cast<float>(std::atan2(-x, -z) * kDegreesPerRadian);
        camera.tilt_degrees = static_cast<float>(std::atan2(y, std::hypot(x, z)) * kDegreesPerRadian);
    }
    return camera;
}

float distance_looked_at(const stage::CameraDescription& description) {
    const auto& at = description.position;
    if (description.look_at) {
        const auto& to = *description.look_at;
        return std::max(1.0f, std::hypot(to[0] - at[0], to[1] - at[1], to[2] - at[2]));
    }
    const Vector3 direction = stage::view_direction(camera_of(description));
    return std::max(1.0f, -(direction.x * at[0] + direction.y * at[1] + direction.z * at[2]));
}

void orbit(stage::Camera& camera, float distance, float pan_degrees, float tilt_degrees) {
    move_along_view(camera, distance);
    camera.pan_degrees += pan_degrees;
    camera.tilt_degrees = std::clamp(camera.tilt_degrees + tilt_degrees, -89.0f, 89.0f);
    move_along_view(camera, -distance);
}

void shift(stage::Camera& camera, float right, float up) {
    const stage::Matrix view = stage::view_matrix(camera);  // its rows are the camera's axes
    camera.position.x += view[0] * right + view[1] * up;
    camera.position.y += view[4] * right + view[5] * up;
    camera.position.z += view[8] * right + view[9] * up;
}

float approach(stage::Camera& camera, float distance, float factor) {
    const float wanted = std::clamp(distance * factor, 1.0f, 50000.0f);
    move_along_view(camera, distance - wanted);
    return wanted;
}

}  // namespace tovu
