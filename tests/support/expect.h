// What tests of several folders look for in the same way.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <string>

#include "host/vector3.h"

namespace tovu {

inline void expect_near(Vector3 expected, Vector3 value, double tolerance) {
    EXPECT_NEAR(expected.x, value.x, tolerance) << "x";
    EXPECT_NEAR(expected.y, value.y, tolerance) << "y";
    EXPECT_NEAR(expected.z, value.z, tolerance) << "z";
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
