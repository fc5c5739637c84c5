// Camera movements for the mouse: orbit, shift, approach.
#pragma once

#include "stage/scene/camera.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// The camera that a scene describes.
stage::Camera camera_of(const stage::CameraDescription& description);

/// The distance from the camera to the point that it looks at: the described point, or without one, the point on the
/// line of sight that is nearest to the world's origin. World units, at least 1.
float distance_looked_at(const stage::CameraDescription& description);

/// Turns the camera about the point `distance` in front of it, by degrees.
void orbit(stage::Camera& camera, float distance, float pan_degrees, float tilt_degrees);

/// Moves the camera to its right and up, in world units.
void shift(stage::Camera& camera, float right, float up);

/// Moves the camera along its line of sight, so that its distance to the point `distance` in front of it becomes
/// `factor` times as large. Returns the new distance.
float approach(stage::Camera& camera, float distance, float factor);

}  // namespace tovu
