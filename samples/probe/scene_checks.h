// Checks of the answers of services. Call them inside an entry point of an instance.
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

/// True if a · b is the identity, apart from rounding errors.
bool are_inverse(const Matrix& a, const Matrix& b);

/// The container's transformation. NaN if the host does not set it.
Matrix transformation_of(int32_t container);

/// The view matrix of the camera that renders. NaN if the host does not set it or has no camera.
Matrix view_matrix();

/// Look-ups of names and numbers that do not exist in any scene.
void check_look_ups();

/// Calls the dispatcher and every service with an out value for an unknown object. check: the check that fails if an
/// out value changes.
void check_unknown_object(Check check, int32_t object);

/// check_unknown_object for an invalid handle and for the mesh access 0. A host that checks its plug-ins complains
/// about these calls.
void check_invalid_handles();

/// Compares the container's matrices with each other and with its position, rotation and scaling.
void check_placement(int32_t container);

/// Compares the view matrix with position and direction of the camera, and these with pan and tilt.
void check_camera();

/// Expects no mesh access for `own_geometry`, the geometry of a plug-in.
void check_own_meshes(int32_t own_geometry);

/// Checks the meshes of a container. name: as in a Container parameter, or '#' and a number.
void check_meshes(const std::string& name);

/// Checks size, format and pixels of the image with this name.
void check_image(const std::string& name);

/// Checks the range of `rand`.
void check_random();

}  // namespace probe
