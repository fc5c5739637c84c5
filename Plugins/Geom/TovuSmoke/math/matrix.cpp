#include "matrix.h"

#include "trigonometry.h"

namespace tovu {
namespace {

// Rotates two columns: a' = a·c + b·s, b' = b·c − a·s.
void turn_columns(float* a, float* b, SineCosine turn) {
    for (int row = 0; row < 4; ++row) {
        const float old_a = a[row];
        const float old_b = b[row];
        a[row] = old_a * turn.cosine + old_b * turn.sine;
        b[row] = old_b * turn.cosine - old_a * turn.sine;
    }
}

void scale_column(float* column, float factor) {
    if (factor == 0.0f) return;
    for (int row = 0; row < 4; ++row) column[row] *= factor;
}

}  // namespace

void translate(Matrix4& matrix, Vector3 by) {
    float* m = matrix.m;
    for (int row = 0; row < 4; ++row) {
        if (by.x != 0.0f) m[12 + row] += m[row] * by.x;
        if (by.y != 0.0f) m[12 + row] += m[4 + row] * by.y;
        if (by.z != 0.0f) m[12 + row] += m[8 + row] * by.z;
    }
}

void scale(Matrix4& matrix, Vector3 factors) {
    scale_column(matrix.m, factors.x);
    scale_column(matrix.m + 4, factors.y);
    scale_column(matrix.m + 8, factors.z);
}

void rotate_x(Matrix4& matrix, float degrees) {
    if (degrees != 0.0f) turn_columns(matrix.m + 4, matrix.m + 8, sine_cosine_degrees(degrees));
}

void rotate_y(Matrix4& matrix, float degrees) {
    if (degrees != 0.0f) turn_columns(matrix.m + 8, matrix.m, sine_cosine_degrees(degrees));
}

void rotate_z(Matrix4& matrix, float degrees) {
    if (degrees != 0.0f) turn_columns(matrix.m, matrix.m + 4, sine_cosine_degrees(degrees));
}

void rotate(Matrix4& matrix, Vector3 degrees) {
    rotate_x(matrix, degrees.x);
    rotate_y(matrix, degrees.y);
    rotate_z(matrix, degrees.z);
}

void rotate(Matrix4& matrix, float degrees, Vector3 axis) {
    normalize(axis);
    const SineCosine turn = sine_cosine_degrees(degrees);
    const float c = turn.cosine;
    const float s = turn.sine;
    const float t = 1.0f - c;
    const float x = axis.x;
    const float y = axis.y;
    const float z = axis.z;
    // R[k][j]: row k, column j of the rotation.
    const float r[3][3] = {{x * x * t + c, x * y * t - z * s, x * z * t + y * s},
                           {x * y * t + z * s, y * y * t + c, y * z * t - x * s},
                           {x * z * t - y * s, y * z * t + x * s, z * z * t + c}};
    for (int row = 0; row < 4; ++row) {
        float* m = matrix.m + row;
        const float old[3] = {m[0], m[4], m[8]};
        for (int j = 0; j < 3; ++j) m[4 * j] = old[0] * r[0][j] + old[1] * r[1][j] + old[2] * r[2][j];
    }
}

}  // namespace tovu
