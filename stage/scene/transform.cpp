#include "transform.h"

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/mat3x3.hpp>

#include "glm_matrix.h"

namespace stage {
namespace {

// All arithmetic is in double precision; results are rounded once.
glm::dvec3 to_glm(Vector3 v) {
    return {v.x, v.y, v.z};
}

Vector3 from_glm(const glm::dvec3& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

glm::dvec3 signed_scaling(const glm::dmat3& axes) {
    const double mirrored = glm::determinant(axes) < 0 ? -1 : 1;
    return {mirrored * glm::length(axes[0]), glm::length(axes[1]), glm::length(axes[2])};
}

}  // namespace

Matrix local_matrix(const Placement& placement) {
    const glm::dvec3 radians = glm::radians(to_glm(placement.rotation_degrees));
    glm::dmat4 matrix = glm::translate(glm::dmat4(1), to_glm(placement.position));
    // Most containers have no rotation, and a plug-in asks for their matrices several times a frame.
    if (radians.x != 0) matrix = glm::rotate(matrix, radians.x, {1, 0, 0});
    if (radians.y != 0) matrix = glm::rotate(matrix, radians.y, {0, 1, 0});
    if (radians.z != 0) matrix = glm::rotate(matrix, radians.z, {0, 0, 1});
    return from_glm(glm::scale(matrix, to_glm(placement.scale)));
}

Matrix multiply(const Matrix& a, const Matrix& b) {
    return from_glm(to_glm(a) * to_glm(b));
}

std::optional<Matrix> inverse(const Matrix& matrix) {
    const glm::dmat4 source = to_glm(matrix);
    if (glm::determinant(source) == 0) return std::nullopt;
    return from_glm(glm::inverse(source));
}

Vector3 scaling_of(const Matrix& matrix) {
    return from_glm(signed_scaling(glm::dmat3(to_glm(matrix))));
}

Vector3 rotation_degrees_of(const Matrix& matrix) {
    glm::dmat3 axes(to_glm(matrix));
    const glm::dvec3 scaling = signed_scaling(axes);
    for (int i = 0; i < 3; ++i) {
        glm::dvec3 unturned(0);
        unturned[i] = 1;
        axes[i] = scaling[i] == 0 ? unturned : axes[i] / scaling[i];
    }
    // Rx · Ry · Rz has the first row (cos y cos z, -cos y sin z, sin y) and the third column
    // (sin y, -sin x cos y, cos x cos y).
    const double cos_y = std::hypot(axes[0][0], axes[1][0]);
    const double y = std::atan2(axes[2][0], cos_y);
    // Near the pole the other two angles cannot be separated.
    const bool at_pole = cos_y < 1e-6;
    const double x = at_pole ? std::atan2(axes[1][2], axes[1][1]) : std::atan2(-axes[2][1], axes[2][2]);
    const double z = at_pole ? 0 : std::atan2(-axes[1][0], axes[0][0]);
    return from_glm(glm::degrees(glm::dvec3(x, y, z)));
}

}  // namespace stage
