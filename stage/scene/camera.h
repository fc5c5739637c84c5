// The camera that renders the scene.
#pragma once

#include "stage/stage_export.h"
#include "transform.h"

namespace stage {

/// Unturned it looks along -Z with +Y up. It turns about the world's Y first, then about its own X, then about the line
/// of sight: Ry(pan) · Rx(tilt) · Rz(roll).
struct Camera {
    Vector3 position{0, 0, 500};       // world units
    float pan_degrees = 0;             // positive looks to the left, toward -X
    float tilt_degrees = 0;            // positive looks up
    float roll_degrees = 0;            // positive turns the camera's top to its left
    float field_of_view_degrees = 45;  // vertical, above 0 and below 180
    float near_distance = 1;           // world units, above 0
    float far_distance = 100000;       // world units, above near_distance
};

/// From the world's coordinates to the camera's.
STAGE_EXPORT Matrix view_matrix(const Camera& camera);

/// Perspective, as OpenGL takes it. aspect: width of the picture by its height.
STAGE_EXPORT Matrix projection_matrix(const Camera& camera, float aspect);

/// Where the camera looks, of length 1: minus the third column of Ry(pan) · Rx(tilt).
STAGE_EXPORT Vector3 view_direction(const Camera& camera);

}  // namespace stage
