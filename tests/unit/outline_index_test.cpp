// The index of outline edges gives the same answers as a test of every edge.
#include "sources/outline_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "outline_source.h"
#include "random_seed.h"

namespace {

using Outlines = std::vector<std::vector<Vector3>>;
constexpr float kInfinite = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Every vertex and a point on every edge, the adjacent floats of both, and random points.
std::vector<Vector3> test_points(const std::vector<Vector3>& vertices, std::mt19937& generator) {
    std::vector<Vector3> points;
    for (size_t i = 0; i < vertices.size(); ++i) {
        const Vector3 a = vertices[i];
        const Vector3 b = vertices[(i + 1) % vertices.size()];
        const float share = static_cast<float>(generator() % 17) / 16;
        for (const Vector3 p : {a, {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y), a.z + share * (b.z - a.z)}}) {
            points.push_back(p);
            points.push_back({std::nextafterf(p.x, kInfinite), p.y, p.z});
            for (const float away : {-kInfinite, kInfinite})
                points.push_back({p.x, std::nextafterf(p.y, away), std::nextafterf(p.z, away)});
        }
    }
    std::uniform_real_distribution<float> around(-15, 15);
    for (int i = 0; i < 300; ++i) points.push_back({around(generator), around(generator), around(generator)});
    std::shuffle(points.begin(), points.end(), generator);
    points.insert(points.end(), {{kNan, 0, 0}, {0, kNan, kNan}, {0, kInfinite, kInfinite}, {-kInfinite, 0, 0}});
    return points;
}

/// A ring of short edges with a level notch in its upper side.
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

// Some vertices lie on a coarse grid, so that edges cross, overlap or lie along the ray. Others are random.
Outlines random_outlines(std::mt19937& generator) {
    if (generator() % 3 == 0) return {random_ring(generator)};
    std::uniform_real_distribution<float> anywhere(-10, 10);
    const bool grid = generator() % 2 != 0;
    const auto value = [&] { return grid ? std::floor(anywhere(generator)) : anywhere(generator); };
    Outlines outlines(1 + generator() % 4);
    for (auto& outline : outlines)
        for (size_t left = generator() % 60; left > 0; --left) outline.push_back({value(), value(), value()});
    outlines.back().insert(outlines.back().end(), {{0, 0, 0}, {1, 5, 3}, {2, -4, 7}});  // never quite empty
    return outlines;
}

TEST(OutlineIndex, AnswersAsEveryEdgeTested) {
    const tovu::RandomSeed seed;
    std::mt19937 generator(seed.value);
    tovu::OutlineIndex index;
    int indexed = 0;
    for (int round = 0; round < 300; ++round) {
        OutlineSource made(random_outlines(generator), round % 2);
        index.stale = true;
        if (!update_index(index, made.source)) continue;
        ++indexed;
        const tovu::InsideTest every_edge{tovu::InsideTest::kTestOutlines, &made.source, nullptr};
        const tovu::InsideTest by_index{tovu::InsideTest::kTestIndex, &made.source, &index};
        for (const Vector3& p : test_points(made.vertices, generator))
            ASSERT_EQ(contains(every_edge, p), contains(by_index, p))
                << "round " << round << " at " << p.x << ", " << p.y;
    }
    EXPECT_GT(indexed, 150);
}

std::vector<Vector3> circle(int corners) {
    std::vector<Vector3> outline;
    for (int i = 0; i < corners; ++i) {
        const float angle = 6.2831853f * static_cast<float>(i) / static_cast<float>(corners);
        outline.push_back({std::cos(angle), std::sin(angle), 0});
    }
    return outline;
}

TEST(OutlineIndex, LeavesOddOutlinesToThePlainTest) {
    std::vector<Vector3> infinite = circle(40), flat = circle(40), tiny = circle(40);
    infinite[7].y = kInfinite;
    for (Vector3& v : flat) v.y = 3;
    for (Vector3& v : tiny) v.y *= 1e-44f;
    const std::pair<const char*, Outlines> rows[] = {
        {"few edges", {circle(5)}},
        {"an infinite coordinate", {infinite}},
        {"no extent", {flat}},
        {"an extent too small to divide by", {tiny}},
        {"a difference beyond float32", {{{0, -3e38f, 0}, {1, 3e38f, 0}}, circle(40)}}};
    for (const auto& [name, outlines] : rows) {
        tovu::OutlineIndex index;
        OutlineSource made(outlines, 0);
        EXPECT_FALSE(update_index(index, made.source)) << name;
    }
}

}  // namespace
