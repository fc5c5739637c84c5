#include "spline.h"

#include <cmath>

namespace tovu {
namespace {

// The interval of the last evaluation, shared by all splines: consecutive arguments mostly fall into the same one.
int32_t last_interval = 0;

int32_t interval_at(const AkimaSpline& spline, double u) {
    const int32_t k = last_interval;
    if (k >= 0 && k <= spline.count - 2 && spline.x[k] <= u && u <= spline.x[k + 1]) return k;
    int32_t low = 0;
    int32_t high = spline.count - 1;
    while (high > low + 1) {
        const int32_t middle = (low + high) / 2;
        (spline.x[middle] > u ? high : low) = middle;
    }
    last_interval = low;
    return low;
}

SplineError check_points(int32_t count, const float* x) {
    if (count < 2) return kSplineTooFewPoints;
    for (int32_t k = 0; k + 1 < count; ++k)
        if (!(x[k + 1] > x[k])) return kSplineNotIncreasing;
    return kSplineOk;
}

// Slopes between the points and two more at each end. slopes[k + 2] is m[k] of the method, k from -2 to n.
void find_slopes(const AkimaSpline& spline, double* slopes) {
    const int32_t n = spline.count;
    double* m = slopes + 2;
    for (int32_t k = 0; k + 1 < n; ++k) m[k] = (spline.y[k + 1] - spline.y[k]) / (spline.x[k + 1] - spline.x[k]);
    m[-1] = 2.0 * m[0] - m[1];
    m[-2] = 2.0 * m[-1] - m[0];
    m[n - 1] = 2.0 * m[n - 2] - m[n - 3];
    m[n] = 2.0 * m[n - 1] - m[n - 2];
}

double derivative(const double* m, int32_t k) {
    const double right = std::fabs(m[k + 1] - m[k]);
    const double left = std::fabs(m[k - 1] - m[k - 2]);
    if (right + left > 0.0) return (right * m[k - 1] + left * m[k]) / (right + left);
    return (m[k - 1] + m[k]) / 2.0;
}

}  // namespace

void build_spline(AkimaSpline& spline, int32_t count, const float* x, const float* y) {
    spline.error = check_points(count, x);
    spline.count = count;
    if (spline.error != kSplineOk) return;
    for (int32_t k = 0; k < count; ++k) {
        spline.x[k] = static_cast<double>(x[k]);
        spline.y[k] = static_cast<double>(y[k]);
    }
    double slopes[kMaxSplinePoints + 3] = {};  // m[1] is read even with two points, and is 0 then
    find_slopes(spline, slopes);
    const double* m = slopes + 2;
    for (int32_t k = 0; k < count; ++k) spline.t[k] = derivative(m, k);
    for (int32_t k = 0; k + 1 < count; ++k) {
        const double h = spline.x[k + 1] - spline.x[k];
        spline.c[k] = (3.0 * m[k] - 2.0 * spline.t[k] - spline.t[k + 1]) / h;
        spline.d[k] = (spline.t[k] + spline.t[k + 1] - 2.0 * m[k]) / (h * h);
    }
}

double spline_value(const AkimaSpline& spline, double u) {
    const int32_t k = interval_at(spline, u);
    const double s = u - spline.x[k];
    return ((spline.d[k] * s + spline.c[k]) * s + spline.t[k]) * s + spline.y[k];
}

}  // namespace tovu
