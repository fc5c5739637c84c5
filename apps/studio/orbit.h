// Moving the camera of the view by the mouse.
#pragma once

#include "stage/scene/camera.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// The camera that a scene describes.
stage::Camera camera_of(const stage::CameraDescription& description);

/// How far in front of the camera the point is that it looks at: the given point's distance, or else where the line of
/// sight is nearest to the world's origin; at least 1.
float distance_looked_at(const stage::CameraDescription& description);

/// Turns the camera about the point `distance` in front of it, by degrees.
void orbit(stage::Camera& camera, float distance, float pan_degrees, float tilt_degrees);

/// Moves the camera to its right and up, in world units.
void shift(stage::Camera& camera, float right, float up);

/// Moves the camera toward the point `distance` in front of it, so that it is `factor` times as far; returns the new
/// distance.
float approach(stage::Camera& camera, float distance, float factor);

}  // namespace tovu
