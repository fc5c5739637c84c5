// Akima's spline, an interpolation that does not overshoot beside flat intervals: H. Akima, "A New Method of
// Interpolation and Smooth Curve Fitting Based on Local Procedures", JACM 17 (1970).
#pragma once

#include <cstdint>

namespace tovu {

constexpr int32_t kMaxSplinePoints = 1000;

enum SplineError : int32_t { kSplineOk = 0, kSplineTooFewPoints = 1, kSplineNotIncreasing = 2 };

/// A piecewise cubic: on interval k, with s = u − x[k], the value is ((d[k]·s + c[k])·s + t[k])·s + y[k].
/// About 40 kB.
struct AkimaSpline {
    SplineError error;
    int32_t count;
    double x[kMaxSplinePoints];
    double y[kMaxSplinePoints];
    double t[kMaxSplinePoints];  // derivative at each point
    double c[kMaxSplinePoints];
    double d[kMaxSplinePoints];
};

/// Builds the spline through `count` points (at most kMaxSplinePoints), x strictly increasing. If `error` is set, the
/// spline cannot be evaluated. With two points the slope after the second counts as 0.
void build_spline(AkimaSpline& spline, int32_t count, const float* x, const float* y);

/// The value at u. Outside the points' range the first and last cubics continue. `error` must be kSplineOk.
double spline_value(const AkimaSpline& spline, double u);

}  // namespace tovu
