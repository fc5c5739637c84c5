// The camera that renders the scene.
#pragma once

#include "stage/stage_export.h"
#include "transform.h"

namespace stage {

/// With all angles 0 it looks along -Z, and +Y is up. Its rotation is Ry(pan) · Rx(tilt) · Rz(roll).
struct Camera {
    Vector3 position{0, 0, 500};       // world units
    float pan_degrees = 0;             // positive turns the view to the left, toward -X
    float tilt_degrees = 0;            // positive turns the view up
    float roll_degrees = 0;            // positive turns the camera's top to its left
    float field_of_view_degrees = 45;  // vertical, above 0 and below 180
};

constexpr double kNearDistance = 1, kFarDistance = 100000;  // clipping planes, world units from the camera

/// Transforms world coordinates to camera coordinates.
STAGE_EXPORT Matrix view_matrix(const Camera& camera);

/// OpenGL's perspective projection. aspect: width of the picture divided by its height.
STAGE_EXPORT Matrix projection_matrix(const Camera& camera, float aspect);

/// The direction of view, of length 1: minus the third column of Ry(pan) · Rx(tilt).
STAGE_EXPORT Vector3 view_direction(const Camera& camera);

}  // namespace stage
