// Converts between the Stage's matrices and those of glm, which does the arithmetic. Internal to the library.
#pragma once

#include <algorithm>
#include <glm/gtc/type_ptr.hpp>
#include <glm/mat4x4.hpp>

#include "transform.h"

namespace stage {

inline glm::dmat4 to_glm(const Matrix& matrix) {
    return glm::dmat4(glm::make_mat4(matrix.data()));
}

/// Rounds each element to float.
inline Matrix from_glm(const glm::dmat4& matrix) {
    const glm::mat4 rounded(matrix);
    Matrix result;
    std::copy_n(glm::value_ptr(rounded), result.size(), result.begin());
    return result;
}

}  // namespace stage
