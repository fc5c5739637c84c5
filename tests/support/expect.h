// What tests of several folders look for in the same way.
#pragma once

#include <gtest/gtest.h>
#include <tovu/vector3.h>

#include <cctype>
#include <cstdlib>
#include <string>

#include "stage/scene/transform.h"

namespace tovu {

inline void expect_near(Vector3 expected, Vector3 value, double tolerance) {
    EXPECT_NEAR(expected.x, value.x, tolerance) << "x";
    EXPECT_NEAR(expected.y, value.y, tolerance) << "y";
    EXPECT_NEAR(expected.z, value.z, tolerance) << "z";
}

/// The matrix times the point, in double precision.
inline Vector3 transform_point(const stage::Matrix& matrix, Vector3 point) {
    const auto row = [&](size_t i) {
        return static_cast<float>(double{matrix[i]} * point.x + double{matrix[i + 4]} * point.y +
                                  double{matrix[i + 8]} * point.z + matrix[i + 12]);
    };
    return {row(0), row(1), row(2)};
}

/// How many numbers the process-wide generator has given since it was seeded with `seed`; -1 when it was not. Draws.
inline int draws_since(unsigned seed) {
    const int next = std::rand();
    std::srand(seed);
    for (int draws = 0; draws < 100000; ++draws)
        if (std::rand() == next) return draws;
    return -1;
}

/// A row's `name` as the name of a test.
template <class Info>
std::string name_of_row(const Info& info) {
    std::string name = info.param.name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

}  // namespace tovu
