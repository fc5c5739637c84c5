// Expectations that tests of several folders share.
#pragma once

#include <gtest/gtest.h>
#include <tovu/particle_record.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>

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

/// The 32-bit words of a plain value, to compare numbers bit for bit.
template <class Value>
std::array<uint32_t, sizeof(Value) / 4> words_of(const Value& value) {
    return std::bit_cast<std::array<uint32_t, sizeof(Value) / 4>>(value);
}

/// Fails with the name of each field whose bits differ in two records. Ignores the links and the fields of consumers.
inline void expect_same(const Particle& expected, const Particle& value) {
    const char* const words[] = {"position.x", "position.y",  "position.z", "velocity.x",    "velocity.y",
                                 "velocity.z", "color",       "alpha",      "size_x",        "size_step_x",
                                 "size_y",     "size_step_y", "rotation",   "rotation_step", "path_angle",
                                 "age",        "life",        "accelerated"};
    for (size_t i = 0; i < std::size(words); ++i) {
        uint32_t bits[2] = {};
        const size_t bytes = 4 * i == offsetof(Particle, color) ? sizeof expected.color : 4;
        std::memcpy(&bits[0], reinterpret_cast<const char*>(&expected) + 4 * i, bytes);
        std::memcpy(&bits[1], reinterpret_cast<const char*>(&value) + 4 * i, bytes);
        EXPECT_EQ(bits[0], bits[1]) << words[i] << ": " << std::bit_cast<float>(bits[0]) << ", "
                                    << std::bit_cast<float>(bits[1]);
    }
}

/// The number of draws from the process-wide generator since it was seeded with `seed`; -1 if it was not. Draws a
/// number.
inline int draws_since(unsigned seed) {
    const int next = std::rand();
    std::srand(seed);
    for (int draws = 0; draws < 100000; ++draws)
        if (std::rand() == next) return draws;
    return -1;
}

}  // namespace tovu
