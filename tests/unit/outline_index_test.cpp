// The index of outline edges answers as a test of every edge does.
#include "sources/outline_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "math/polygon.h"
#include "outline_source.h"

namespace {

using Outlines = std::vector<std::vector<Vector3>>;

bool plainly_inside(const tovu::ContainerSpawnSource& source, Vector3 point) {
    for (int32_t i = 0; i < source.outline_count; ++i)
        if (source.ref_plane == 1 ? tovu::point_in_polygon_xz(source.outline_sizes[i], source.outline_starts[i], point)
                                  : tovu::point_in_polygon_xy(source.outline_sizes[i], source.outline_starts[i], point))
            return true;
    return false;
}

/// The points that edges decide: every vertex, a place on every edge, their neighbours by one step of a float, and
/// points all around.
std::vector<Vector3> telling_points(const std::vector<Vector3>& vertices, std::mt19937& generator) {
    std::vector<Vector3> points;
    for (size_t i = 0; i < vertices.size(); ++i) {
        const Vector3 a = vertices[i];
        const Vector3 b = vertices[(i + 1) % vertices.size()];
        const float share = static_cast<float>(generator() % 17) / 16;
        points.push_back(a);
        points.push_back({a.x + share * (b.x - a.x), a.y + share * (b.y - a.y), a.z + share * (b.z - a.z)});
    }
    const float inf = std::numeric_limits<float>::infinity();
    const size_t count = points.size();
    for (size_t i = 0; i < count; ++i) {
        const Vector3 p = points[i];
        points.push_back({std::nextafterf(p.x, inf), p.y, p.z});
        points.push_back({p.x, std::nextafterf(p.y, -inf), std::nextafterf(p.z, -inf)});
        points.push_back({p.x, std::nextafterf(p.y, inf), std::nextafterf(p.z, inf)});
    }
    std::uniform_real_distribution<float> around(-15, 15);
    for (int i = 0; i < 300; ++i) points.push_back({around(generator), around(generator), around(generator)});
    std::shuffle(points.begin(), points.end(), generator);  // what the first in a band teaches holds for all
    const float nan = std::numeric_limits<float>::quiet_NaN();
    points.insert(points.end(), {{nan, 0, 0}, {0, nan, nan}, {0, inf, inf}, {0, -inf, -inf}, {-inf, 0, 0}});
    return points;
}

/// A ring of short edges around a wide middle, with a level notch in its upper side.
std::vector<Vector3> random_ring(std::mt19937& generator) {
    std::uniform_real_distribution<float> radius(7, 9);
    std::vector<Vector3> ring;
    for (int i = 0; i < 80; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / 80;
        const float r = radius(generator);
        const float up = i >= 12 && i < 28 ? 4.0f : r * std::sin(angle);
        ring.push_back({r * std::cos(angle), up, up});
    }
    return ring;
}

// Vertices on a coarse grid make edges that cross, lie on each other or along the ray; others are anywhere.
Outlines random_outlines(std::mt19937& generator) {
    std::uniform_real_distribution<float> anywhere(-10, 10);
    const bool grid = generator() % 2 != 0;
    Outlines outlines(1 + generator() % 4);
    for (auto& outline : outlines) {
        const size_t size = generator() % 60;
        for (size_t i = 0; i < size; ++i) {
            const auto value = [&] { return grid ? std::floor(anywhere(generator)) : anywhere(generator); };
            const float x = value();
            const float y = value();
            outline.push_back({x, y, value()});
        }
    }
    if (generator() % 3 == 0) return {random_ring(generator)};
    outlines.back().insert(outlines.back().end(), {{0, 0, 0}, {1, 5, 3}, {2, -4, 7}});  // never quite empty
    return outlines;
}

TEST(OutlineIndex, AnswersAsEveryEdgeTested) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 generator(seed);
    tovu::OutlineIndex index;
    int indexed = 0;
    for (int round = 0; round < 300; ++round) {
        const Outlines outlines = random_outlines(generator);
        OutlineSource made(outlines, round % 2);
        index.stale = true;
        if (!update_index(index, made.source)) continue;
        ++indexed;
        for (const Vector3& p : telling_points(made.vertices, generator)) {
            const float along = made.source.ref_plane == 1 ? p.z : p.y;
            ASSERT_EQ(plainly_inside(made.source, p), index_contains(index, p.x, along))
                << "round " << round << " at " << p.x << ", " << along;
        }
    }
    EXPECT_GT(indexed, 150);
    release(index);
}

std::vector<Vector3> circle(int corners) {
    std::vector<Vector3> outline;
    for (int i = 0; i < corners; ++i) {
        const double angle = 6.283185307 * i / corners;
        outline.push_back(
            {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), static_cast<float>(i)});
    }
    return outline;
}

TEST(OutlineIndex, FollowsTheReferencePlane) {
    OutlineSource made({circle(40)}, 0);
    tovu::OutlineIndex index;
    ASSERT_TRUE(update_index(index, made.source));
    EXPECT_TRUE(index_contains(index, 0, 0.5f));
    made.source.ref_plane = 1;  // z rises with every vertex: the last edge closes the outline
    ASSERT_TRUE(update_index(index, made.source));
    EXPECT_EQ(plainly_inside(made.source, {0, 0, 20}), index_contains(index, 0, 20));
    EXPECT_EQ(plainly_inside(made.source, {-0.9f, 0, 20}), index_contains(index, -0.9f, 20));
    EXPECT_FALSE(index_contains(index, 0, -1));
    release(index);
}

struct UnusableCase {
    const char* name;
    Outlines outlines;
};

TEST(OutlineIndex, LeavesOddOutlinesToThePlainTest) {
    std::vector<Vector3> infinite = circle(40);
    infinite[7].y = std::numeric_limits<float>::infinity();
    std::vector<Vector3> flat = circle(40);
    for (Vector3& v : flat) v.y = 3;
    std::vector<Vector3> tiny = circle(40);
    for (Vector3& v : tiny) v.y *= 1e-44f;
    const UnusableCase cases[] = {{"few edges", {circle(5)}},
                                  {"an infinite coordinate", {infinite}},
                                  {"no extent", {flat}},
                                  {"an extent too small to divide by", {tiny}},
                                  {"a difference beyond float32", {{{0, -3e38f, 0}, {1, 3e38f, 0}}, circle(40)}}};
    for (const UnusableCase& row : cases) {
        tovu::OutlineIndex index;
        OutlineSource made(row.outlines, 0);
        EXPECT_FALSE(update_index(index, made.source)) << row.name;
        release(index);
    }
}

}  // namespace
