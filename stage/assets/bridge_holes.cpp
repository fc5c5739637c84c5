#include "bridge_holes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

namespace stage {
namespace {

using Outline = std::vector<Vector3>;

// Twice the signed area of the triangle a, b, c: positive when c lies left of a → b. Computed in double to reduce
// rounding errors.
double turn(const Vector3& a, const Vector3& b, const Vector3& c) {
    const double abx = double{b.x} - a.x, aby = double{b.y} - a.y;
    const double acx = double{c.x} - a.x, acy = double{c.y} - a.y;
    return abx * acy - aby * acx;
}

bool is_counter_clockwise(const Outline& outline) {
    double twice_area = 0;
    for (size_t i = 2; i < outline.size(); ++i) twice_area += turn(outline[0], outline[i - 1], outline[i]);
    return twice_area > 0;
}

size_t rightmost(const Outline& outline) {
    const auto right = std::max_element(outline.begin(), outline.end(), [](auto& a, auto& b) { return a.x < b.x; });
    return static_cast<size_t>(right - outline.begin());
}

bool in_closed_triangle(const Vector3& p, const Vector3& a, const Vector3& b, const Vector3& c) {
    const double ab = turn(a, b, p), bc = turn(b, c, p), ca = turn(c, a, p);
    return (ab >= 0 && bc >= 0 && ca >= 0) || (ab <= 0 && bc <= 0 && ca <= 0);
}

// True when `point` lies on the inner side between the two edges of vertex i. Earlier cuts duplicate vertices; of the
// duplicates, only one for which this is true can be connected to `point` without crossing the outline.
bool faces(const Outline& outline, size_t i, const Vector3& point) {
    const Vector3& before = outline[i == 0 ? outline.size() - 1 : i - 1];
    const Vector3& after = outline[i + 1 == outline.size() ? 0 : i + 1];
    const bool left_of_arriving = turn(before, outline[i], point) >= 0;
    const bool left_of_leaving = turn(outline[i], after, point) >= 0;
    const bool convex = turn(before, outline[i], after) >= 0;
    return convex ? left_of_arriving && left_of_leaving : left_of_arriving || left_of_leaving;
}

// Where a ray towards +x first hits the outline.
struct RayHit {
    Vector3 point;
    size_t vertex;  // the end of the edge that is hit: at the hit point, or else the one with the larger x
};

std::optional<RayHit> first_hit(const Outline& outline, const Vector3& from) {
    std::optional<RayHit> hit;
    double nearest_x = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < outline.size(); ++i) {
        const size_t j = i + 1 == outline.size() ? 0 : i + 1;
        const Vector3 &a = outline[i], &b = outline[j];
        // The area lies to the left of each edge, so a ray towards +x leaves it through an upward edge.
        if (!(a.y < b.y && a.y <= from.y && from.y <= b.y)) continue;
        const double share = (double{from.y} - a.y) / (double{b.y} - a.y);
        const double x = a.x + share * (double{b.x} - a.x);
        if (x < from.x || x >= nearest_x) continue;
        nearest_x = x;
        const bool at_an_end = from.y == a.y || from.y == b.y;
        const bool take_b = at_an_end ? from.y == b.y : b.x > a.x;
        hit = RayHit{{static_cast<float>(x), from.y, from.z}, take_b ? j : i};
    }
    return hit;
}

size_t nearest_vertex(const Outline& outline, const Vector3& to) {
    const auto distance = [&to](const Vector3& v) { return std::hypot(double{v.x} - to.x, double{v.y} - to.y); };
    const auto nearest =
        std::min_element(outline.begin(), outline.end(), [&](auto& a, auto& b) { return distance(a) < distance(b); });
    return static_cast<size_t>(nearest - outline.begin());
}

// The vertex to connect `from` to: the end of the edge that the ray hits. Vertices inside the triangle of `from`, the
// hit point and that end can hide it; then it is the one of them at the smallest angle to the ray, the nearest on a
// tie.
size_t visible_vertex(const Outline& outline, const Vector3& from) {
    const std::optional<RayHit> hit = first_hit(outline, from);
    if (!hit) return nearest_vertex(outline, from);  // `from` is outside: the cut may cross contours, the area stays
    size_t best = hit->vertex;
    double best_angle = std::numeric_limits<double>::infinity(), best_distance = best_angle;
    for (size_t i = 0; i < outline.size(); ++i) {
        const Vector3& v = outline[i];
        if (v.x < from.x || !in_closed_triangle(v, from, hit->point, outline[hit->vertex])) continue;
        if (!faces(outline, i, from)) continue;
        const double dx = double{v.x} - from.x, dy = std::abs(double{v.y} - from.y);
        const double angle = std::atan2(dy, dx), distance = std::hypot(dx, dy);
        if (angle > best_angle || (angle == best_angle && distance >= best_distance)) continue;
        best = i;
        best_angle = angle;
        best_distance = distance;
    }
    return best;
}

// The outline up to vertex `at`, then once around the hole from `start` to `start`, then the outline from `at` on.
Outline spliced(const Outline& outline, size_t at, const Outline& hole, size_t start) {
    const auto cut = outline.begin() + static_cast<std::ptrdiff_t>(at);
    const auto entry = hole.begin() + static_cast<std::ptrdiff_t>(start);
    Outline joined;
    joined.reserve(outline.size() + hole.size() + 2);
    joined.insert(joined.end(), outline.begin(), cut + 1);
    joined.insert(joined.end(), entry, hole.end());
    joined.insert(joined.end(), hole.begin(), entry + 1);
    joined.insert(joined.end(), cut, outline.end());
    return joined;
}

}  // namespace

Mesh bridge_holes(const Mesh& outer, const std::vector<Mesh>& holes) {
    if (outer.vertices.size() < 3) return {};
    Outline outline = outer.vertices;
    if (!is_counter_clockwise(outline)) std::reverse(outline.begin(), outline.end());

    std::vector<Outline> clockwise_holes;
    for (const Mesh& hole : holes) {
        if (hole.vertices.size() < 3) continue;
        Outline& added = clockwise_holes.emplace_back(hole.vertices);
        if (is_counter_clockwise(added)) std::reverse(added.begin(), added.end());
    }
    // From right to left, so that no unconnected hole lies between a hole and the outline to its right.
    std::stable_sort(clockwise_holes.begin(), clockwise_holes.end(),
                     [](const Outline& a, const Outline& b) { return a[rightmost(a)].x > b[rightmost(b)].x; });
    for (const Outline& hole : clockwise_holes) {
        const size_t start = rightmost(hole);
        outline = spliced(outline, visible_vertex(outline, hole[start]), hole, start);
    }
    return {std::move(outline)};
}

}  // namespace stage
