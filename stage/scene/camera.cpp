#include "camera.h"

#include <algorithm>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <glm/mat4x4.hpp>

namespace stage {
namespace {

glm::dmat4 turned(const Camera& camera) {
    const glm::dmat4 panned = glm::rotate(glm::dmat4(1), glm::radians(double{camera.pan_degrees}), {0, 1, 0});
    return glm::rotate(panned, glm::radians(double{camera.tilt_degrees}), {1, 0, 0});
}

Matrix rounded(const glm::dmat4& matrix) {
    const glm::mat4 single(matrix);
    Matrix result;
    std::copy_n(glm::value_ptr(single), result.size(), result.begin());
    return result;
}

}  // namespace

Matrix view_matrix(const Camera& camera) {
    const glm::dmat4 orientation =
        glm::rotate(turned(camera), glm::radians(double{camera.roll_degrees}), glm::dvec3(0, 0, 1));
    const glm::dvec3 position(camera.position.x, camera.position.y, camera.position.z);
    return rounded(glm::translate(glm::transpose(orientation), -position));
}

Matrix projection_matrix(const Camera& camera, float aspect) {
    return rounded(glm::perspective(glm::radians(double{camera.field_of_view_degrees}), double{aspect},
                                    double{camera.near_distance}, double{camera.far_distance}));
}

Vector3 view_direction(const Camera& camera) {
    const glm::vec3 back(glm::dvec3(turned(camera)[2]));
    return {-back.x, -back.y, -back.z};
}

}  // namespace stage
