#include "stage/assets/shapes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "outline_inside.h"

using namespace stage;
using namespace stage_test;
using std::numbers::pi;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct ShapeCase {
    const char* name;
    Result<std::vector<Mesh>> shape;
    size_t corners;
    double area;      // exact, from the formula of the polygon
    Vector3 first;    // corner
    double inside_x;  // a point inside, and one outside
    double outside_x;
};

// A regular polygon of n corners on a circle has the area n/2 r² sin(2π/n); the spiral's band is what 2π∫ r dr gives
// along the middle line, thickness × its mean radius × angle, up to the chords.
const ShapeCase kShapeCases[] = {
    {"rectangle", make_rectangle(4, 2), 4, 8, {-2, -1, 0}, 1.9, 2.1},
    {"ellipse", make_ellipse(4, 2, 64), 64, 32 * 2 * 1 * std::sin(2 * pi / 64), {2, 0, 0}, 1.9, 2.1},
    {"polygon", make_polygon({{0, 0, 5}, {0, 2, 5}, {2, 0, 5}}), 3, -2, {0, 0, 5}, 1.5, 2.5},
    {"star", make_star(4, 2, 1), 8, 8 * std::sin(pi / 4), {0, 2, 0}, 1.5, -2.1},
    {"ring", make_ring(2, 1, 48), 98, 24 * (4 - 1) * std::sin(2 * pi / 48), {2, 0, 0}, 1.5, 0.5},
    {"spiral", make_spiral(2, 1, 3, 0.5f, 720), 2882, 0.5 * 2 * 4 * pi, {1.25, 0, 0}, 2.1, 1.5},
};

TEST(Shapes, HaveTheirSizeWindingAndCorners) {
    for (const ShapeCase& row : kShapeCases) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(row.shape) << row.shape.error().message;
        ASSERT_EQ(row.shape->size(), 1u);
        const Mesh& mesh = row.shape->front();
        EXPECT_EQ(mesh.vertices.size(), row.corners);
        EXPECT_NEAR(twice_area(mesh) / 2, row.area, 1e-3);
        const Vector3& first = mesh.vertices[0];
        EXPECT_NEAR(std::hypot(first.x - row.first.x, first.y - row.first.y, first.z - row.first.z), 0, 1e-6);
        EXPECT_TRUE(encloses(mesh, row.inside_x, 0.01));
        EXPECT_FALSE(encloses(mesh, row.outside_x, 0.01));
    }
}

TEST(Shapes, SayWhatWouldBeRight) {
    const std::pair<Result<std::vector<Mesh>>, const char*> kCases[] = {
        {make_rectangle(0, 1), "rectangle: width is 0; it must be a number above 0"},
        {make_rectangle(1, kNan), "rectangle: height is nan; it must be a number above 0"},
        {make_ellipse(1, 1, 2), "ellipse: segments is 2; it must be from 3 to 100000"},
        {make_ellipse(1, 1, 100001), "ellipse: segments is 100001; it must be from 3 to 100000"},
        {make_polygon({{0, 0, 0}, {1, 0, 0}}), "polygon: 2 corners; it must have from 3 to 100000"},
        {make_polygon({{0, 0, 0}, {1, 0, 0}, {1, kNan, 0}}),
         "polygon: corner 2 is (1, nan, 0); its coordinates must be finite numbers"},
        {make_star(1, 1, 1), "star: points is 1; it must be from 2 to 100000"},
        {make_ring(1, 1, 8), "ring: inner_radius is 1; it must be below outer_radius, 1"},
        {make_spiral(2, 1, 3, 1, 32), "spiral: thickness is 1; it must be below the distance of two turns, 1"},
        {make_spiral(1, 1, 9, 3, 32), "spiral: thickness is 3; it must be at most twice inner_radius, 2"},
        {make_spiral(1, -1, 9, 3, 32), "spiral: inner_radius is -1; it must be from 0 to below outer_radius, 9"},
        {make_spiral(2000, 1, 9, 1e-4f, 100), "spiral: turns × segments is 200000; it must be at most 100000"},
    };
    for (const auto& [shape, message] : kCases) {
        ASSERT_FALSE(shape) << message;
        EXPECT_EQ(shape.error().message, message);
    }
}

}  // namespace
