#include "stage/assets/bridge_holes.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <random>

#include "outline_inside.h"
#include "random_seed.h"
#include "stage/assets/contours.h"

using namespace stage_test;
using stage::Contour;
using stage::FillRule;
using stage::Mesh;

namespace {

// Makes an outline from alternating x and y.
Mesh outline(std::initializer_list<float> xy) {
    Mesh mesh;
    for (const float* p = xy.begin(); p != xy.end(); p += 2) mesh.vertices.push_back({p[0], p[1], 0});
    return mesh;
}

Mesh box(float x0, float y0, float x1, float y1) {
    return outline({x0, y0, x1, y0, x1, y1, x0, y1});
}

Mesh reversed(Mesh mesh) {
    std::reverse(mesh.vertices.begin(), mesh.vertices.end());
    return mesh;
}

// A grid of six by six holes with corners at random distances from their centres. Holes do not touch.
std::vector<Mesh> jagged_holes() {
    std::mt19937 random(tovu::random_seed());
    std::uniform_real_distribution<float> radius(3, 9.9f);
    std::vector<Mesh> holes(36);
    for (size_t i = 0; i < 36; ++i) {
        const size_t column = i % 6, row = i / 6;
        for (int corner = 0; corner < 13; ++corner) {
            const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(corner) / 13, r = radius(random);
            holes[i].vertices.push_back({static_cast<float>(column) * 20 - 50 + r * std::cos(angle),
                                         static_cast<float>(row) * 20 - 50 + r * std::sin(angle), 0});
        }
    }
    return holes;
}

const Mesh kComb =
    outline({0, 0, 100, 0, 100, 100, 80, 100, 80, 10, 60, 10, 60, 100, 40, 100, 40, 10, 20, 10, 20, 100, 0, 100});

struct BridgeCase {
    const char* name;
    Mesh outer;
    std::vector<Mesh> holes;
    bool apart;  // holes lie inside the outer contour and do not touch, so that cuts must not cross anything
};

const BridgeCase kBridgeCases[] = {
    {"no hole", box(0, 0, 10, 10), {}, true},
    {"every winding", reversed(box(0, 0, 10, 10)), {box(1, 1, 2, 2), reversed(box(3, 3, 6, 6))}, true},
    {"holes in a row", box(0, 0, 10, 4), {box(1, 1, 2, 3), box(7, 1, 8, 3), box(3, 1, 4, 3), box(5, 1, 6, 3)}, true},
    {"teeth hide the nearest edge's end", kComb, {box(1, 20, 15, 90), box(2, 1, 10, 8), box(45, 15, 55, 95)}, true},
    {"a spike between ray and corner",
     outline({0, 0, 100, -40, 30, 4, 60, 60, 0, 10}),
     {outline({1, 3, 9, 5, 1, 7})},
     true},
    {"two cuts to one tooth",
     outline({0, 0, 7, 0, 8, 3, 9, 0, 10, 0, 10, 10, 0, 10}),
     {outline({6, 4, 3, 4.3f, 3, 3.7f}), outline({5.9f, 5, 3, 5.3f, 3, 4.8f})},
     true},
    {"jagged holes", box(-61, -61, 61, 61), jagged_holes(), true},
    {"a hole on a corner", box(0, 0, 10, 10), {outline({10, 10, 5, 8, 8, 5})}, false},
    {"holes that share an edge", box(0, 0, 10, 10), {box(2, 2, 5, 8), box(5, 2, 8, 8)}, false},
    {"a hole outside", box(0, 0, 10, 10), {box(12, 2, 15, 5)}, false},
    {"a hole across the border", box(0, 0, 10, 10), {box(8, 2, 15, 5)}, false},
};

bool crosses(const Vector3& a, const Vector3& b, const Vector3& c, const Vector3& d) {
    const auto turn = [](const Vector3& p, const Vector3& q, const Vector3& r) {
        return (double{q.x} - p.x) * (double{r.y} - p.y) - (double{q.y} - p.y) * (double{r.x} - p.x);
    };
    return turn(a, b, c) * turn(a, b, d) < 0 && turn(c, d, a) * turn(c, d, b) < 0;
}

// Two visits of the same point cross if the incoming and outgoing directions of one separate those of the other.
bool visits_cross(const Mesh& mesh, size_t i, size_t j) {
    const auto& v = mesh.vertices;
    const size_t n = v.size();
    if (v[i].x != v[j].x || v[i].y != v[j].y) return false;
    const auto towards = [&](size_t k) { return std::atan2(double{v[k].y} - v[i].y, double{v[k].x} - v[i].x); };
    const double from = towards((i + n - 1) % n);
    const auto around = [&](size_t k) {
        return std::fmod(towards(k) - from + 4 * std::numbers::pi, 2 * std::numbers::pi);
    };
    const double to = around((i + 1) % n), other_from = around((j + n - 1) % n), other_to = around((j + 1) % n);
    const bool all_differ = other_from != 0 && other_to != 0 && other_from != to && other_to != to;
    return all_differ && (other_from < to) != (other_to < to);
}

int crossings(const Mesh& mesh) {
    const auto& v = mesh.vertices;
    int count = 0;
    for (size_t i = 0; i < v.size(); ++i)
        for (size_t j = i + 1; j < v.size(); ++j)
            count += crosses(v[i], v[(i + 1) % v.size()], v[j], v[(j + 1) % v.size()]) || visits_cross(mesh, i, j);
    return count;
}

TEST(BridgeHoles, EnclosesTheAreaOfTheContours) {
    const tovu::RandomSeed seed;
    for (const auto& [name, outer, holes, apart] : kBridgeCases) {
        SCOPED_TRACE(name);
        const Mesh bridged = bridge_holes(outer, holes);
        size_t corners = outer.vertices.size();
        for (const Mesh& hole : holes) corners += hole.vertices.size() + 2;
        EXPECT_EQ(bridged.vertices.size(), corners);
        EXPECT_GT(twice_area(bridged), 0) << "not counter-clockwise";
        EXPECT_TRUE(!apart || crossings(bridged) == 0);

        std::vector<Mesh> contours = holes;
        contours.push_back(outer);
        const Box b = box_of(contours);
        std::mt19937 random(seed.value);
        std::uniform_real_distribution<double> x(b.min_x - 1, b.max_x + 1), y(b.min_y - 1, b.max_y + 1);
        for (int i = 0; i < 20000; ++i) {
            const double px = x(random), py = y(random);
            bool odd = false;
            for (const Mesh& contour : contours) odd ^= encloses(contour, px, py);
            ASSERT_EQ(encloses(bridged, px, py), odd) << "at " << px << ", " << py;
        }
    }
}

const Contour kSquare{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
const Contour kSquareClockwise{{0, 4}, {4, 4}, {4, 0}, {0, 0}};
const Contour kInner{{1, 1}, {3, 1}, {3, 3}, {1, 3}};
const Contour kInnerClockwise{{1, 3}, {3, 3}, {3, 1}, {1, 1}};
const Contour kShifted{{2, 0}, {6, 0}, {6, 4}, {2, 4}};
const Contour kIsland{{1.5, 1.5}, {2.5, 1.5}, {2.5, 2.5}, {1.5, 2.5}};

// Name, contours, rule, number of meshes, twice their total area.
const std::tuple<const char*, std::vector<Contour>, FillRule, size_t, double> kNestingCases[] = {
    {"hole of the other winding", {kSquare, kInnerClockwise}, FillRule::kNonZero, 1, 2 * (16 - 4)},
    {"and all turned around", {kSquareClockwise, kInner}, FillRule::kNonZero, 1, 2 * (16 - 4)},
    {"the same winding is no hole", {kSquare, kInner}, FillRule::kNonZero, 1, 2 * 16},
    {"overlapping contours join", {kSquare, kShifted}, FillRule::kNonZero, 1, 2 * 24},
    {"or leave the overlap out", {kSquare, kShifted}, FillRule::kEvenOdd, 2, 2 * 16},
    {"an island in the hole", {kIsland, kInner, kSquare}, FillRule::kEvenOdd, 2, 2 * (16 - 4 + 1)},
    {"nothing enclosed", {{}, {{1, 1}}, {{1, 1}, {2, 2}}, {{0, 0}, {1, 1}, {2, 2}}}, FillRule::kEvenOdd, 0, 0},
    {"not a number", {kSquare, {{0, 0}, {NAN, 1}, {1, 1}}}, FillRule::kEvenOdd, 0, 0},
};

TEST(OutlinesOf, TellsOuterContoursFromHoles) {
    for (const auto& [name, contours, rule, meshes, twice_areas] : kNestingCases) {
        SCOPED_TRACE(name);
        const std::vector<Mesh> outlines = stage::outlines_of(contours, rule);
        EXPECT_EQ(outlines.size(), meshes);
        double sum = 0;
        for (const Mesh& mesh : outlines) sum += twice_area(mesh);
        EXPECT_NEAR(sum, twice_areas, 1e-6);
    }
}

TEST(FlattenedCurves, StayWithinTheToleranceWithFewChords) {
    constexpr double kTolerance = 1e-3;
    Contour parabola{{-1, 1}}, arc{{1, 0}};  // y = x² from -1 to 1; a quarter of the unit circle, itself off by 2.8e-4
    append_quadratic(parabola, {0, -1}, {1, 1}, kTolerance);
    append_cubic(arc, {1, 0.5522847498}, {0.5522847498, 1}, {0, 1}, kTolerance);
    // The distance between a chord of width w and the parabola is w²/4, and 2 / w chords are needed.
    EXPECT_EQ(parabola.size() - 1, static_cast<size_t>(std::ceil(2 / std::sqrt(4 * kTolerance))));
    for (size_t i = 1; i < arc.size(); ++i)
        EXPECT_NEAR(std::hypot(arc[i - 1].x + arc[i].x, arc[i - 1].y + arc[i].y) / 2, 1, kTolerance + 2.8e-4);
    EXPECT_LT(arc.size(), 25u);
}

}  // namespace
