#include "bridge_holes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

namespace stage {
namespace {

using Outline = std::vector<Vector3>;

// Twice the signed area of the triangle a, b, c: positive when c lies left of a → b. In double, so that the
// differences of floats lose nothing.
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

// Vertices that earlier cuts have doubled lie at one place but look into different directions; only the one that has
// `point` between its two edges, on the inner side, can be joined to it without crossing.
bool looks_at(const Outline& outline, size_t i, const Vector3& point) {
    const Vector3& before = outline[i == 0 ? outline.size() - 1 : i - 1];
    const Vector3& after = outline[i + 1 == outline.size() ? 0 : i + 1];
    const bool left_of_arriving = turn(before, outline[i], point) >= 0;
    const bool left_of_leaving = turn(outline[i], after, point) >= 0;
    const bool convex = turn(before, outline[i], after) >= 0;
    return convex ? left_of_arriving && left_of_leaving : left_of_arriving || left_of_leaving;
}

// Where the ray from a point towards +x first leaves the outline, and the end of that edge which lies further right.
struct RayHit {
    Vector3 point;
    size_t vertex;
};

std::optional<RayHit> first_hit(const Outline& outline, const Vector3& from) {
    std::optional<RayHit> hit;
    double nearest_x = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < outline.size(); ++i) {
        const size_t j = i + 1 == outline.size() ? 0 : i + 1;
        const Vector3 &a = outline[i], &b = outline[j];
        // The area lies left of its edges, so seen from inside the nearest one runs upward.
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

// The vertex to join `from` to. The end of the edge that the ray hits can be hidden by vertices inside the triangle of
// `from`, hit and end; of those the one at the smallest angle to the ray is in sight, the nearest one on a tie.
size_t vertex_in_sight(const Outline& outline, const Vector3& from) {
    const std::optional<RayHit> hit = first_hit(outline, from);
    if (!hit) return nearest_vertex(outline, from);  // not inside: the cut may cross, the parity still holds
    size_t best = hit->vertex;
    double best_angle = std::numeric_limits<double>::infinity(), best_distance = best_angle;
    for (size_t i = 0; i < outline.size(); ++i) {
        const Vector3& v = outline[i];
        if (v.x < from.x || !in_closed_triangle(v, from, hit->point, outline[hit->vertex])) continue;
        if (!looks_at(outline, i, from)) continue;
        const double dx = double{v.x} - from.x, dy = std::abs(double{v.y} - from.y);
        const double angle = std::atan2(dy, dx), distance = std::hypot(dx, dy);
        if (angle > best_angle || (angle == best_angle && distance >= best_distance)) continue;
        best = i;
        best_angle = angle;
        best_distance = distance;
    }
    return best;
}

// Outline up to and with `at`, once around the hole from `start` back to `start`, and on from `at` again.
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

    std::vector<Outline> left_to_join;
    for (const Mesh& hole : holes) {
        if (hole.vertices.size() < 3) continue;
        left_to_join.push_back(hole.vertices);
        if (is_counter_clockwise(hole.vertices)) std::reverse(left_to_join.back().begin(), left_to_join.back().end());
    }
    // From the right, so that no hole that is still to come stands between a hole and the outline on its right.
    std::stable_sort(left_to_join.begin(), left_to_join.end(),
                     [](const Outline& a, const Outline& b) { return a[rightmost(a)].x > b[rightmost(b)].x; });
    for (const Outline& hole : left_to_join) {
        const size_t start = rightmost(hole);
        outline = spliced(outline, vertex_in_sight(outline, hole[start]), hole, start);
    }
    return {std::move(outline)};
}

}  // namespace stage
