#include "math/fast_sine_cosine.h"

#include <gtest/gtest.h>
#include <tovu/vector3.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "render/truncate.h"

namespace tovu {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// True within 1.8 units in the last place. Near zeros an absolute difference is accepted.
bool near(float value, double exact) {
    const auto nearest = static_cast<float>(std::fabs(exact));
    const double unit = std::nextafter(nearest, kInfinity) - nearest;
    return std::fabs(value - exact) <= std::max(1.8 * unit, 1e-14);
}

void expect_sine_and_cosine_of(float degrees) {
    const SineCosine turn = fast_sine_cosine_degrees(degrees);
    const double radians = std::fmod(static_cast<double>(degrees), 360.0) * std::numbers::pi / 180.0;
    ASSERT_TRUE(near(turn.sine, std::sin(radians))) << degrees << " degrees: sine " << turn.sine;
    ASSERT_TRUE(near(turn.cosine, std::cos(radians))) << degrees << " degrees: cosine " << turn.cosine;
}

TEST(SineCosine, RightToTheLastPlaceForEveryMagnitude) {
    constexpr float kLargest = 4194304.0f;
    for (float magnitude = 1e-30f; magnitude < kLargest; magnitude *= 1.0007f) {
        expect_sine_and_cosine_of(magnitude);
        expect_sine_and_cosine_of(-magnitude);
    }
    for (float degrees = -800.0f; degrees < 800.0f; degrees += 0.00371f) expect_sine_and_cosine_of(degrees);
    for (float edge : {45.0f, 135.0f, kLargest / 2, kLargest})
        for (float degrees : {std::nextafter(edge, 0.0f), edge}) expect_sine_and_cosine_of(degrees);
}

TEST(SineCosine, ExactAtQuarterTurnsAndUndefinedAtInfinity) {
    const Vector3 quarters[] = {{0, 0, 1}, {-0.0f, 0, 1}, {90, 1, 0}, {180, 0, -1}, {270, -1, 0}, {-3600090, -1, 0}};
    for (const auto& [degrees, sine, cosine] : quarters) {
        EXPECT_EQ(sine, fast_sine_cosine_degrees(degrees).sine) << degrees;
        EXPECT_EQ(cosine, fast_sine_cosine_degrees(degrees).cosine) << degrees;
    }
    for (float degrees : {kInfinity, -kInfinity, kNan}) {
        EXPECT_TRUE(std::isnan(fast_sine_cosine_degrees(degrees).sine)) << degrees;
        EXPECT_TRUE(std::isnan(fast_sine_cosine_degrees(degrees).cosine)) << degrees;
    }
}

TEST(Truncated, TowardZeroAndHeldToTheRange) {
    const struct {
        float value;
        int32_t whole;
        uint8_t low;
    } cases[] = {{0.4f, 0, 0},
                 {-1.9f, -1, 255},
                 {kNan, 0, 0},
                 {kInfinity, INT32_MAX, 255},
                 {-kInfinity, INT32_MIN, 0},
                 {2147483648.0f, INT32_MAX, 255},
                 {-2147483520.0f, -2147483520, 128}};
    for (const auto& row : cases) {
        EXPECT_EQ(row.whole, truncated(row.value)) << row.value;
        EXPECT_EQ(row.low, low_byte(row.value)) << row.value;
    }
}

}  // namespace
}  // namespace tovu
