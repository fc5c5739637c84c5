// Colour and opacity over life: the spline, and the indices of the two tables.
#include "particles/curves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "particles/spline.h"

namespace {

using tovu::AkimaSpline;

constexpr float kInfinite = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

std::unique_ptr<AkimaSpline> spline_through(const std::vector<float>& x, const std::vector<float>& y) {
    auto spline = std::make_unique<AkimaSpline>();
    build_spline(*spline, static_cast<int32_t>(x.size()), x.data(), y.data());
    return spline;
}

TEST(Spline, DerivativesWeighNeighbouringSlopes) {
    const std::vector<float> x = {0, 1, 3, 4, 6, 7, 9};
    const std::vector<float> y = {0, 2, 1, 5, 5, 5, 2};
    const auto spline = spline_through(x, y);
    ASSERT_EQ(tovu::kSplineOk, spline->error);
    // Slopes between the points, two more beyond either end by going on evenly; that behind point k is slope[k + 2].
    const double slope[] = {7, 4.5, 2, -0.5, 4, 0, 0, -1.5, -3, -4.5};
    for (size_t k = 0; k < x.size(); ++k) {
        SCOPED_TRACE(k);
        const double right = std::fabs(slope[k + 3] - slope[k + 2]);
        const double left = std::fabs(slope[k + 1] - slope[k]);
        const double derivative = right + left > 0 ? (right * slope[k + 1] + left * slope[k + 2]) / (right + left)
                                                   : (slope[k + 1] + slope[k + 2]) / 2;
        const double at = x[k], h = 1e-6;
        EXPECT_NEAR(y[k], spline_value(*spline, at), 1e-12);
        EXPECT_NEAR(derivative, (spline_value(*spline, at) - spline_value(*spline, at - h)) / h, 1e-4) << "to the left";
        EXPECT_NEAR(derivative, (spline_value(*spline, at + h) - spline_value(*spline, at)) / h, 1e-4);
    }
}

TEST(Spline, ValuesDoNotDependOnTheOneBefore) {
    const auto five = spline_through({0, 0.1f, 0.5f, 0.75f, 1}, {0, 1, 0.5f, 0.25f, 1});
    const auto two = spline_through({0, 1}, {1, 0});
    std::vector<double> rising;
    for (int i = -20; i <= 120; ++i) rising.push_back(spline_value(*five, i / 100.0));
    for (int i = 120; i >= -20; --i) {
        spline_value(*two, i % 2);  // another interval, of another spline, in between
        spline_value(*five, i % 2);
        EXPECT_NEAR(rising[static_cast<size_t>(i + 20)], spline_value(*five, i / 100.0), 1e-12) << i;
    }
}

TEST(CurveIndices, StayWithinTheTables) {
    const struct {
        float age, life;
        uint32_t color, alpha;
    } rows[] = {{1.5f, 3, 512, 256},  {2.9999f, 3, 1023, 511},   {3, 3, 1024, 512},
                {0, 0, 1024, 512},    {5, 3, 1024, 512},         {-1, 3, 0, 0},
                {kNan, 3, 1024, 512}, {kInfinite, 3, 1024, 512}, {-kInfinite, 3, 0, 0}};
    for (const auto& row : rows) {
        const uint32_t k = tovu::color_index(row.age, row.life);
        EXPECT_EQ(row.color, k) << row.age << " of " << row.life;
        EXPECT_EQ(row.alpha, tovu::alpha_index(k)) << row.age << " of " << row.life;
    }
    for (int i = 0; i < 30000; ++i) {
        const auto age = static_cast<float>(i) * 1e-4f;
        EXPECT_EQ(static_cast<uint32_t>(age * 512 / 3.0f), tovu::alpha_index(tovu::color_index(age, 3))) << age;
    }
}

}  // namespace
