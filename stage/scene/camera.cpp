#include "camera.h"

#include <glm/gtc/matrix_transform.hpp>

#include "glm_matrix.h"

namespace stage {
namespace {

glm::dmat4 turned(const Camera& camera) {
    const glm::dmat4 panned = glm::rotate(glm::dmat4(1), glm::radians(double{camera.pan_degrees}), {0, 1, 0});
    return glm::rotate(panned, glm::radians(double{camera.tilt_degrees}), {1, 0, 0});
}

}  // namespace

Matrix view_matrix(const Camera& camera) {
    const glm::dmat4 orientation =
        glm::rotate(turned(camera), glm::radians(double{camera.roll_degrees}), glm::dvec3(0, 0, 1));
    const glm::dvec3 position(camera.position.x, camera.position.y, camera.position.z);
    return from_glm(glm::translate(glm::transpose(orientation), -position));
}

Matrix projection_matrix(const Camera& camera, float aspect) {
    return from_glm(glm::perspective(glm::radians(double{camera.field_of_view_degrees}), double{aspect}, kNearDistance,
                                     kFarDistance));
}

Vector3 view_direction(const Camera& camera) {
    const glm::vec3 back(glm::dvec3(turned(camera)[2]));
    return {-back.x, -back.y, -back.z};
}

}  // namespace stage
