// Interpolation through points without overshoot at flat stretches: Akima, "A New Method of Interpolation and Smooth
// Curve Fitting Based on Local Procedures", JACM 17 (1970).
#pragma once

#include <cstdint>

namespace tovu {

constexpr int32_t kMaxSplinePoints = 1000;

enum SplineError : int32_t { kSplineOk = 0, kSplineTooFewPoints = 1, kSplineNotIncreasing = 2 };

/// A piecewise cubic: on interval k, with s = u − x[k], the value is ((d[k]·s + c[k])·s + t[k])·s + y[k].
/// About 40 kB: made for one table, on the stack.
struct AkimaSpline {
    SplineError error;
    int32_t count;
    double x[kMaxSplinePoints];
    double y[kMaxSplinePoints];
    double t[kMaxSplinePoints];  // derivative at each point
    double c[kMaxSplinePoints];
    double d[kMaxSplinePoints];
};

/// Builds the spline through `count` points (at most kMaxSplinePoints), x strictly increasing; says in `error` what was
/// wrong, and then holds nothing to evaluate. With two points the slope beyond the second counts as 0.
void build_spline(AkimaSpline& spline, int32_t count, const float* x, const float* y);

/// The value at u; outside the points' range the first and last pieces continue. The spline must be free of errors.
double spline_value(const AkimaSpline& spline, double u);

}  // namespace tovu
