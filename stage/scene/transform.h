// Placement of containers: matrices in OpenGL's column order, and the rotation and scaling that they contain.
#pragma once

#include <tovu/vector3.h>

#include <array>
#include <optional>

#include "stage/stage_export.h"

namespace stage {

/// element[4 * column + row]; columns 0 to 2 are the images of the axes, column 3 the translation.
using Matrix = std::array<float, 16>;

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct Placement {
    Vector3 position{0, 0, 0};          // in the parent's units
    Vector3 rotation_degrees{0, 0, 0};  // about X, Y and Z; the matrix is Rx · Ry · Rz
    Vector3 scale{1, 1, 1};             // along its own axes
};

/// T · Rx · Ry · Rz · S: a point is scaled first and moved last.
STAGE_EXPORT Matrix local_matrix(const Placement& placement);

/// a · b: b acts first.
STAGE_EXPORT Matrix multiply(const Matrix& a, const Matrix& b);

/// Empty if the matrix has no inverse (a scale of 0).
STAGE_EXPORT std::optional<Matrix> inverse(const Matrix& matrix);

/// Lengths of the first three columns. If the matrix mirrors, x is negative, so that rotation and scaling together
/// reproduce the matrix.
STAGE_EXPORT Vector3 scaling_of(const Matrix& matrix);

/// The angles in degrees of the rotation Rx · Ry · Rz that is left after the scaling is divided out of the matrix: y in
/// -90…90, x and z in -180…180. At y = ±90 only the sum or the difference of x and z is defined, and z is 0. Exact for
/// matrices without shear; a column of length 0 counts as an axis without rotation.
STAGE_EXPORT Vector3 rotation_degrees_of(const Matrix& matrix);

}  // namespace stage
