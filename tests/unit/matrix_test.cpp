// Vectors and matrices: OpenGL's conventions, and the rules for zero arguments, which keep every bit.
#include "math/matrix.h"

#include <limits>

#include "expect.h"
#include "math/trigonometry.h"

namespace tovu {
namespace {

constexpr Vector3 kBy{2, -1, 3};
constexpr Vector3 kAngles{90, 180, -90};
constexpr Vector3 kAxis{5, 5, 5};

TEST(Matrix, OperationsActBeforeWhatTheMatrixHolds) {
    const struct {
        const char* name;
        void (*apply)(Matrix4&);
        Vector3 image;  // of (1, 2, 3)
    } rows[] = {
        {"translate", [](Matrix4& m) { translate(m, kBy); }, {3, 1, 6}},
        {"scale", [](Matrix4& m) { scale(m, kBy); }, {2, -2, 9}},
        {"rotate_x", [](Matrix4& m) { rotate_x(m, 90); }, {1, -3, 2}},
        {"rotate_y", [](Matrix4& m) { rotate_y(m, 90); }, {3, 2, -1}},
        {"rotate_z", [](Matrix4& m) { rotate_z(m, 90); }, {-2, 1, 3}},
        {"three angles: about z first, then y, then x", [](Matrix4& m) { rotate(m, kAngles); }, {-2, 3, -1}},
        {"about an axis of any length", [](Matrix4& m) { rotate(m, 120, kAxis); }, {3, 1, 2}},
        {"no axis scales by the cosine", [](Matrix4& m) { rotate(m, 60, Vector3{}); }, {0.5f, 1, 1.5f}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Matrix4 matrix;
        row.apply(matrix);
        expect_near(row.image, transform(matrix, {1, 2, 3}), 1e-6);
        matrix = {{0, 1, 0, 9, -1, 0, 0, 9, 0, 0, 1, 9, 10, 20, 30, 9}};  // a quarter turn; the bottom row is not read
        row.apply(matrix);
        expect_near({10 - row.image.y, 20 + row.image.x, 30 + row.image.z}, transform(matrix, {1, 2, 3}), 1e-5);
    }
}

TEST(Matrix, ZeroLeavesEveryBit) {
    // Values that 0 · x + y would not keep: negative zeros, infinities and NaN.
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    Matrix4 matrix{{kInfinite, kNan, -0.0f, 1, kNan, 2, kInfinite, 3, kInfinite, kNan, 4, 5, -0.0f, -0.0f, 6, 7}};
    const Matrix4 before = matrix;
    translate(matrix, {0, 0, -0.0f});
    rotate_x(matrix, 0);
    rotate_y(matrix, -0.0f);
    rotate_z(matrix, 0);
    scale(matrix, {0, 0, 0});
    EXPECT_EQ(words_of(before), words_of(matrix));
    translate(matrix, {0, 1, 0});  // the terms of x and z stay out of the sum
    EXPECT_EQ(2.0f, matrix.m[13]);
}

TEST(Matrix, AnglesAreRoundedBeforeTheirCosine) {
    const auto radians = static_cast<float>(90 * 0.017453292519943295);
    EXPECT_EQ(static_cast<float>(std::cos(static_cast<double>(radians))), sine_cosine_degrees(90).cosine);
    EXPECT_EQ(1.0f, sine_cosine_degrees(90).sine);
}

TEST(Vector, NormalizeDividesAndReturnsTheLength) {
    const struct {
        Vector3 vector;
        float length;
        Vector3 result;
    } rows[] = {{{3, 0, 4}, 5, {3.0f / 5, 0, 4.0f / 5}},
                {{0, 0, 41}, 41, {0, 0, 1}},  // in float32 41 · (1 / 41) is not 1
                {{0, 0, 0}, 0, {0, 0, 0}},
                {{1e-30f, 0, 1e-30f}, 0, {1e-30f, 0, 1e-30f}}};  // squares below float32 make a length of 0
    for (const auto& row : rows) {
        Vector3 v = row.vector;
        EXPECT_EQ(row.length, normalize(v));
        expect_near(row.result, v, 0);
    }
    Vector3 undefined{std::numeric_limits<float>::quiet_NaN(), 2, 3};
    EXPECT_TRUE(std::isnan(normalize(undefined)));
    EXPECT_EQ(2.0f, undefined.y);
}

}  // namespace
}  // namespace tovu
