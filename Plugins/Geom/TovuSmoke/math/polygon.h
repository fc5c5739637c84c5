// Point-in-polygon tests by the crossing-number rule (Shimrat, "Algorithm 112: Position of point relative to polygon",
// CACM 1962, in its half-open form).
#pragma once

#include <cstdint>

#include "vector.h"

namespace tovu {

/// Whether the ray from `p` toward greater `p_across` crosses the edge between two vertices. Each edge is half-open
/// along the second coordinate, so that a vertex counts once. A point on a left or lower border is inside, a point on a
/// right or upper border outside. across: the first coordinate (x); along: the second coordinate (y or z).
inline bool crosses_edge(float a_across, float a_along, float b_across, float b_along, float p_across, float p_along) {
    const bool spans = (a_along <= p_along && p_along < b_along) || (b_along <= p_along && p_along < a_along);
    return spans && p_across < (b_across - a_across) * (p_along - a_along) / (b_along - a_along) + a_across;
}

/// Even-odd test in the x-y plane against the closed outline of `count` vertices; z is ignored. The outline may cross
/// itself and have either orientation. False for a count of 0.
bool point_in_polygon_xy(int32_t count, const Vector3* vertices, Vector3 point);

/// The same in the x-z plane; y is ignored.
bool point_in_polygon_xz(int32_t count, const Vector3* vertices, Vector3 point);

}  // namespace tovu
