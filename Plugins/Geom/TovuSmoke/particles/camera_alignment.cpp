#include "camera_alignment.h"

#include "../math/trigonometry.h"
#include "../services/host_queries.h"

namespace tovu {
namespace {

Vector3 viewing_direction(int32_t camera_handle) {
    Matrix4 turned;
    rotate_y(turned, host::camera_pan(camera_handle));
    rotate_x(turned, host::camera_tilt(camera_handle));
    const float* m = turned.m;
    return {m[12] - m[8], m[13] - m[9], m[14] - m[10]};
}

}  // namespace

void align_to_camera(SmokeInstance& instance) {
    const int32_t camera_handle = host::render_camera();
    const Vector3 view = viewing_direction(camera_handle);
    instance.billboard_axis = {-view.y, view.x, 0.0f};
    Vector3 unit_axis = instance.billboard_axis;
    const float axis_length = normalize(unit_axis);
    instance.billboard_tilt = -arc_tangent_degrees(axis_length, -view.z);

    // The roll cancels the rotation of the tilted quad's up axis in the camera's view.
    Matrix4 turned;
    rotate(turned, instance.billboard_tilt, instance.billboard_axis);
    const float* r = turned.m;
    const Matrix4 view_matrix = host::camera_view_matrix(camera_handle);
    const float* v = view_matrix.m;
    const float a = v[0] * r[4] + v[4] * r[5] + v[8] * r[6] + v[12] * r[7];
    const float b = v[1] * r[4] + v[5] * r[5] + v[9] * r[6] + v[13] * r[7];
    const float roll = arc_tangent_degrees(std::fabs(a), b);
    instance.billboard_roll = a > 0.0f ? roll : -roll;
}

}  // namespace tovu
