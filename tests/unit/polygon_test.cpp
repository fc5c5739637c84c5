// Point in polygon: borders, crossings and both planes.
#include "math/polygon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

using Outline = std::vector<Vector3>;

const Outline kSquare = {{0, 0, 5}, {1, 0, 6}, {1, 1, 7}, {0, 1, 8}};
const Outline kBowTie = {{0, 0, 0}, {2, 2, 0}, {2, 0, 0}, {0, 2, 0}};
const Outline kDiamond = {{0, -1, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
const Outline kStairs = {{0, 0, 0}, {3, 0, 0}, {3, 1, 0}, {2, 1, 0}, {2, 2, 0}, {0, 2, 0}};
// One closed outline with a hole, joined to the border by a cut.
const Outline kRing = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0},
                       {1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}, {1, 1, 0}};
const Outline kNone = {};
const Outline kPoint = {{0, 0, 0}};

const struct {
    const char* name;
    const Outline& outline;
    float x, y;
    bool inside;
} kPoints[] = {
    {"lower left corner", kSquare, 0, 0, true},
    {"lower border", kSquare, 0.5f, 0, true},
    {"left border", kSquare, 0, 0.5f, true},
    {"right border", kSquare, 1, 0.5f, false},
    {"upper border", kSquare, 0.5f, 1, false},
    {"upper right corner", kSquare, 1, 1, false},
    {"middle", kSquare, 0.5f, 0.5f, true},
    {"outside, beside the middle", kSquare, -0.5f, 0.5f, false},
    {"a bow tie's left wing", kBowTie, 0.2f, 1, true},
    {"a bow tie's right wing", kBowTie, 1.8f, 1, true},
    {"above a bow tie's knot", kBowTie, 1, 1.5f, false},
    {"a ray through a corner counts it once", kDiamond, -0.5f, 0, true},
    {"a ray through two corners", kDiamond, -2, 0, false},
    {"a ray along an edge, from inside", kStairs, 1, 1, true},
    {"a ray along an edge, from outside", kStairs, -1, 1, false},
    {"in a ring", kRing, 0.5f, 2, true},
    {"in a ring's hole", kRing, 2, 2, false},
    {"no vertices", kNone, 0, 0, false},
    {"one vertex", kPoint, 0, 0, false},
    {"not a number", kSquare, 0.5f, std::numeric_limits<float>::quiet_NaN(), false},
};

TEST(Polygon, EvenOddWithHalfOpenEdges) {
    for (const auto& row : kPoints) {
        SCOPED_TRACE(row.name);
        Outline outline = row.outline;
        const auto count = static_cast<int32_t>(outline.size());
        EXPECT_EQ(row.inside, tovu::point_in_polygon_xy(count, outline.data(), {row.x, row.y, 99}));
        std::reverse(outline.begin(), outline.end());
        EXPECT_EQ(row.inside, tovu::point_in_polygon_xy(count, outline.data(), {row.x, row.y, 99})) << "backwards";
        for (Vector3& v : outline) v = {v.x, 40, v.y};
        EXPECT_EQ(row.inside, tovu::point_in_polygon_xz(count, outline.data(), {row.x, 99, row.y})) << "in x-z";
    }
}

}  // namespace
