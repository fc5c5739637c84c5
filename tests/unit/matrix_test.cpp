// Vectors and matrices: OpenGL's conventions, and the zero rules that leave every bit as it was.
#include "math/matrix.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

namespace {

using tovu::Matrix4;

constexpr double kDegree = 3.14159265358979323846 / 180.0;

/// Row r, column c.
struct Textbook {
    double m[4][4];
};

Textbook rotation(double degrees, double x, double y, double z) {
    const double length = std::sqrt(x * x + y * y + z * z);
    x /= length;
    y /= length;
    z /= length;
    const double c = std::cos(degrees * kDegree);
    const double s = std::sin(degrees * kDegree);
    const double t = 1 - c;
    return {{{x * x * t + c, x * y * t - z * s, x * z * t + y * s, 0},
             {y * x * t + z * s, y * y * t + c, y * z * t - x * s, 0},
             {z * x * t - y * s, z * y * t + x * s, z * z * t + c, 0},
             {0, 0, 0, 1}}};
}

Textbook product(const Textbook& a, const Textbook& b) {
    Textbook result{};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            for (int k = 0; k < 4; ++k) result.m[r][c] += a.m[r][k] * b.m[k][c];
    return result;
}

Matrix4 some_matrix() {
    std::mt19937 generator(7);
    std::uniform_real_distribution<float> value(-3, 3);
    Matrix4 matrix;
    for (float& element : matrix.m) element = value(generator);
    return matrix;
}

struct OperationCase {
    const char* name;
    void (*apply)(Matrix4&);
    Textbook factor;
};

const OperationCase kOperations[] = {
    {"translate",
     [](Matrix4& m) {
         translate(m, {1, -2, 3});
     },
     {{{1, 0, 0, 1}, {0, 1, 0, -2}, {0, 0, 1, 3}, {0, 0, 0, 1}}}},
    {"scale",
     [](Matrix4& m) {
         scale(m, {2, -3, 0.5f});
     },
     {{{2, 0, 0, 0}, {0, -3, 0, 0}, {0, 0, 0.5, 0}, {0, 0, 0, 1}}}},
    {"a factor of 0 keeps the axis",
     [](Matrix4& m) {
         scale(m, {0, 2, 1});
     },
     {{{1, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}},
    {"rotate_x", [](Matrix4& m) { rotate_x(m, 33); }, rotation(33, 1, 0, 0)},
    {"rotate_y", [](Matrix4& m) { rotate_y(m, 33); }, rotation(33, 0, 1, 0)},
    {"rotate_z", [](Matrix4& m) { rotate_z(m, 33); }, rotation(33, 0, 0, 1)},
    {"three angles: x, y, z",
     [](Matrix4& m) {
         rotate(m, {20, -50, 110});
     },
     product(product(rotation(20, 1, 0, 0), rotation(-50, 0, 1, 0)), rotation(110, 0, 0, 1))},
    {"about an axis of any length",
     [](Matrix4& m) {
         rotate(m, 77, {2, -1, 3});
     },
     rotation(77, 2, -1, 3)},
    {"about an axis by 0",
     [](Matrix4& m) {
         rotate(m, 0, {2, -1, 3});
     },
     rotation(0, 2, -1, 3)},
    {"no axis scales by the cosine",
     [](Matrix4& m) {
         rotate(m, 60, {0, 0, 0});
     },
     {{{0.5, 0, 0, 0}, {0, 0.5, 0, 0}, {0, 0, 0.5, 0}, {0, 0, 0, 1}}}},
};

TEST(Matrix, OperationsMultiplyOnTheRight) {
    for (const OperationCase& row : kOperations) {
        SCOPED_TRACE(row.name);
        const Matrix4 before = some_matrix();
        Textbook old{};
        for (int k = 0; k < 16; ++k) old.m[k % 4][k / 4] = static_cast<double>(before.m[k]);
        const Textbook expected = product(old, row.factor);
        Matrix4 after = before;
        row.apply(after);
        for (int k = 0; k < 16; ++k) EXPECT_NEAR(expected.m[k % 4][k / 4], static_cast<double>(after.m[k]), 5e-6) << k;
    }
}

TEST(Matrix, ZeroLeavesEveryBit) {
    // Values that 0 · x + y would not keep: negative zeros, infinities and NaN.
    Matrix4 matrix = some_matrix();
    matrix.m[0] = matrix.m[6] = matrix.m[8] = std::numeric_limits<float>::infinity();
    matrix.m[1] = matrix.m[4] = matrix.m[9] = std::numeric_limits<float>::quiet_NaN();
    matrix.m[12] = matrix.m[13] = matrix.m[2] = -0.0f;
    const Matrix4 before = matrix;
    translate(matrix, {0, 0, -0.0f});
    rotate_x(matrix, 0);
    rotate_y(matrix, -0.0f);
    rotate_z(matrix, 0);
    rotate(matrix, {0, 0, 0});
    scale(matrix, {0, 0, 0});
    EXPECT_EQ(0, std::memcmp(before.m, matrix.m, sizeof matrix.m));
    translate(matrix, {0, 1, 0});  // the terms of x and z stay out of the sum
    EXPECT_EQ(before.m[5], matrix.m[13]);
}

TEST(Matrix, AnglesAreRoundedBeforeTheirCosine) {
    const auto radians = static_cast<float>(90 * 0.017453292519943295);
    EXPECT_EQ(static_cast<float>(std::cos(static_cast<double>(radians))), tovu::turn_of(90).cosine);
    EXPECT_EQ(1.0f, tovu::turn_of(90).sine);
}

TEST(Matrix, TransformIgnoresTheBottomRow) {
    Matrix4 matrix;
    translate(matrix, {1, 2, 3});
    EXPECT_EQ(1.0f, matrix.m[15]);
    matrix.m[3] = matrix.m[7] = matrix.m[11] = matrix.m[15] = 9;
    const Vector3 point = transform(matrix, {10, 20, 30});
    EXPECT_EQ(11.0f, point.x);
    EXPECT_EQ(22.0f, point.y);
    EXPECT_EQ(33.0f, point.z);
}

struct NormalizeCase {
    const char* name;
    Vector3 vector;
    float length;
    Vector3 result;
};
const NormalizeCase kNormalizeCases[] = {
    {"whole numbers", {3, 0, 4}, 5, {3.0f / 5, 0, 4.0f / 5}},
    {"zero stays", {0, 0, 0}, 0, {0, 0, 0}},
    {"squares below float32 make a length of 0", {1e-30f, 0, 1e-30f}, 0, {1e-30f, 0, 1e-30f}},
};

TEST(Vector, NormalizeReturnsTheLength) {
    for (const NormalizeCase& row : kNormalizeCases) {
        SCOPED_TRACE(row.name);
        Vector3 v = row.vector;
        EXPECT_EQ(row.length, tovu::normalize(v));
        EXPECT_EQ(row.result.x, v.x);
        EXPECT_EQ(row.result.y, v.y);
        EXPECT_EQ(row.result.z, v.z);
    }
    Vector3 undefined{std::numeric_limits<float>::quiet_NaN(), 2, 3};
    EXPECT_TRUE(std::isnan(tovu::normalize(undefined)));
    EXPECT_EQ(2.0f, undefined.y);
}

TEST(Vector, NormalizeDivides) {
    int reciprocal_differs = 0;
    for (int i = 1; i < 100; ++i) {
        const Vector3 old{static_cast<float>(i), 3, 7};
        Vector3 v = old;
        const float length = tovu::normalize(v);
        EXPECT_EQ(old.x / length, v.x);
        EXPECT_EQ(old.z / length, v.z);
        reciprocal_differs += old.z * (1 / length) != v.z;
    }
    EXPECT_GT(reciprocal_differs, 0) << "the cases cannot tell a division from a multiplication";
}

}  // namespace
