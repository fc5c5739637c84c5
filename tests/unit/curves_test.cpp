// The spline of opacity over life.
#include "particles/spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

using tovu::AkimaSpline;

std::unique_ptr<AkimaSpline> spline_through(const std::vector<float>& x, const std::vector<float>& y) {
    auto spline = std::make_unique<AkimaSpline>();
    build_spline(*spline, static_cast<int32_t>(x.size()), x.data(), y.data());
    return spline;
}

TEST(Spline, DerivativesWeighNeighbouringSlopes) {
    const std::vector<float> x = {0, 1, 3, 4, 6, 7, 9, 11, 12, 13};
    const std::vector<float> y = {0, 2, 1, 5, 5, 5, 2, -1, -0.5f, 0};
    const auto spline = spline_through(x, y);
    ASSERT_EQ(tovu::kSplineOk, spline->error);
    // Slopes between the points, and two extrapolated ones at either end; the one after point k is slope[k + 2].
    const double slope[] = {7, 4.5, 2, -0.5, 4, 0, 0, -1.5, -1.5, 0.5, 0.5, 0.5, 0.5};
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

}  // namespace
