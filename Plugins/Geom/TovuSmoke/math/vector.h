// Operations on vectors of three floats, in float32. Sums of products are added left to right.
#pragma once

#include <cfloat>
#include <cmath>

#include "../host/vector3.h"

namespace tovu {

// The x87 unit of 32-bit x86 keeps more digits between operations than a float has.
static_assert(FLT_EVAL_METHOD == 0,
              "float arithmetic must round to float: on 32-bit x86 build with -msse2 -mfpmath=sse");

inline Vector3 operator+(Vector3 a, Vector3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector3 operator-(Vector3 a, Vector3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector3 operator-(Vector3 a) {
    return {-a.x, -a.y, -a.z};
}
inline Vector3 operator*(Vector3 a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}
inline Vector3& operator+=(Vector3& a, Vector3 b) {
    return a = a + b;
}
inline Vector3& operator*=(Vector3& a, float s) {
    return a = a * s;
}

inline float dot(Vector3 a, Vector3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Component by component.
inline Vector3 scaled(Vector3 a, Vector3 factors) {
    return {a.x * factors.x, a.y * factors.y, a.z * factors.z};
}

/// Scales `v` to length 1 and returns its former length. If that is 0 or NaN, `v` stays as it is.
/// Divides, since multiplying by the reciprocal would round twice.
inline float normalize(Vector3& v) {
    const float length = std::sqrt(dot(v, v));
    if (length > 0.0f) v = {v.x / length, v.y / length, v.z / length};
    return length;
}

}  // namespace tovu
