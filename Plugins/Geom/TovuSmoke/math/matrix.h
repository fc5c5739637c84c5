// 4 × 4 matrices in OpenGL's column order. Every operation multiplies on the right, as OpenGL's operations do.
#pragma once

#include "vector.h"

namespace tovu {

/// m[4 * column + row]; columns 0 to 2 are the images of the axes, column 3 the translation. Starts as the identity.
struct Matrix4 {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

/// M ← M · T. Leaves out the terms of components that are exactly 0, so a zero translation changes no bit.
void translate(Matrix4& matrix, Vector3 by);

/// M ← M · S. A factor of exactly 0 leaves its column unchanged, as a factor of 1 does.
void scale(Matrix4& matrix, Vector3 factors);

/// M ← M · R about one axis, degrees. An angle of exactly 0 changes no bit.
void rotate_x(Matrix4& matrix, float degrees);
void rotate_y(Matrix4& matrix, float degrees);
void rotate_z(Matrix4& matrix, float degrees);

/// M ← M · Rx · Ry · Rz, degrees.
void rotate(Matrix4& matrix, Vector3 degrees);

/// M ← M · R about an axis of any length, degrees, as glRotatef. An axis of length 0 scales the first three columns by
/// the cosine.
void rotate(Matrix4& matrix, float degrees, Vector3 axis);

/// Applies the matrix to a point, or to a direction if the matrix has no translation. Ignores the bottom row.
inline Vector3 transform(const float* m, Vector3 v) {
    return {m[0] * v.x + m[4] * v.y + m[8] * v.z + m[12], m[1] * v.x + m[5] * v.y + m[9] * v.z + m[13],
            m[2] * v.x + m[6] * v.y + m[10] * v.z + m[14]};
}
inline Vector3 transform(const Matrix4& matrix, Vector3 v) {
    return transform(matrix.m, v);
}

}  // namespace tovu
