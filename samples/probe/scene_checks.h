// Checks of what the services answer. Each is called inside an entry point that is given an instance.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "report.h"

namespace probe {

/// In OpenGL's column order.
using Matrix = std::array<float, 16>;

/// a · b.
Matrix product(const Matrix& a, const Matrix& b);

/// a · b is the identity, but for the rounding of its sums.
bool are_inverse(const Matrix& a, const Matrix& b);

/// The container's transformation. Not-a-numbers where the host sets none.
Matrix transformation_of(int32_t container);

/// From the world to the camera that renders. Not-a-numbers where the host sets none or there is no camera.
Matrix view_matrix();

/// Look-ups of what no scene has.
void check_look_ups();

/// Every service with an out value, and the dispatcher, about an object that the host does not know. check: which one
/// counts what is set.
void check_unknown_object(Check check, int32_t object);

/// The same about a handle that is not valid and the mesh access 0. A host that watches its plug-ins complains: a
/// plug-in has no reason to ask.
void check_invalid_handles();

/// The container's matrices against each other and against its position, rotation and scaling.
void check_placement(int32_t container);

/// The view matrix against position and direction, those against pan and tilt.
void check_camera();

/// No mesh access to `own_geometry`, a plug-in's.
void check_own_meshes(int32_t own_geometry);

/// The meshes that the container carries: `name` as in a Container parameter, or a number behind '#'.
void check_meshes(const std::string& name);

/// Size, format and pixels of the image with this name.
void check_image(const std::string& name);

/// Draws from `rand`.
void check_random();

}  // namespace probe
