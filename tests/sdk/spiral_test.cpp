// The sample geometry plug-in that supplies spawn points, asked as a smoke asks it, and by a smoke.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn_requests.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "stage/opengl/dispatch.h"
#include "test_host.h"

using namespace tovu;
using stage::ParameterValues;
using testing::IsEmpty;

namespace {

constexpr uint32_t kSeed = 12;
using Point = std::array<float, 3>;

struct Shape {
    double inner, outer, turns, thickness, angle;
};

ParameterValues values_of(const Shape& shape) {
    return {{"inner_radius", shape.inner},
            {"outer_radius", shape.outer},
            {"turns", shape.turns},
            {"thickness", shape.thickness},
            {"angle", shape.angle}};
}

// How far along the band a point lies that is `slack` or less off it, 0 to 1; below 0 for a point elsewhere. Found by
// walking along the middle line.
double place_along(const Shape& shape, double x, double y, double slack) {
    constexpr int kSteps = 20000;
    const double radius = std::hypot(x, y), angle = std::atan2(y, x), full = 2 * std::numbers::pi;
    for (int i = 0; i <= kSteps; ++i) {
        const double along = static_cast<double>(i) / kSteps;
        const double middle = shape.inner + (shape.outer - shape.inner) * along;
        if (std::abs(radius - middle) > shape.thickness / 2 + slack) continue;
        const double off = std::remainder((shape.angle / 360 + shape.turns * along) * full - angle, full);
        if (std::abs(off) <= shape.turns / kSteps * full + std::max(0.0, slack) / radius) return along;
    }
    return -1;
}

struct SpiralHost : TestHost {
    explicit SpiralHost(const ParameterValues& values = {}) : TestHost(kSeed) {
        auto plugin = stage::load_plugin(stage(), TOVU_SPIRAL_PLUGIN);
        EXPECT_TRUE(plugin) << plugin.error().message;
        spiral = stage::add_container(stage(), "spiral");
        const auto added = stage::add_instance(stage(), spiral, *plugin, values);
        EXPECT_TRUE(added) << added.error().message;
    }
    // The request's answer; -1 when nothing was written.
    int32_t ask(int32_t request, void* data) {
        int32_t reply = -1;
        EXPECT_TRUE(stage::dispatch(stage(), spiral, request, data, &reply));
        return reply;
    }
    Point spawn_point() {
        Point point{NAN, NAN, NAN};
        EXPECT_EQ(ask(TOVU_REQUEST_NEW_SPAWN_POINT, point.data()), 1);
        return point;
    }
    bool is_inside(Point point) { return ask(TOVU_REQUEST_IS_INSIDE, point.data()) != 0; }

    int32_t spiral = -1;
};

const std::pair<const char*, Shape> kShapes[] = {
    {"a spiral", {20, 100, 3, 6, 0}},
    {"a ring", {50, 50, 1, 10, 0}},
    {"part of a ring", {50, 50, 0.25, 10, 200}},
    {"inward", {90, 30, 2.5, 8, -50}},
    {"from the middle", {0, 60, 2, 4, 30}},
};

TEST(Spiral, SpawnPointsAreEvenlySpreadOverTheBand) {
    for (const auto& [name, shape] : kShapes) {
        SCOPED_TRACE(name);
        SpiralHost host(values_of(shape));
        ASSERT_EQ(host.ask(TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, nullptr), 1);
        // The square of the middle line's radius grows evenly with the area: ten equal areas, 1000 points.
        std::array<int, 10> counts{};
        int outer_half = 0;  // of the band's width
        for (int i = 0; i < 1000; ++i) {
            const Point p = host.spawn_point();
            EXPECT_EQ(p[2], 0);
            const double along = place_along(shape, p[0], p[1], 1e-3);
            ASSERT_GE(along, 0) << p[0] << ", " << p[1] << ", seed " << kSeed;
            const double radius = shape.inner + (shape.outer - shape.inner) * along;
            outer_half += std::hypot(p[0], p[1]) > std::hypot(radius, shape.thickness / 2);
            const double share = shape.inner == shape.outer
                                     ? along
                                     : (radius * radius - shape.inner * shape.inner) /
                                           (shape.outer * shape.outer - shape.inner * shape.inner);
            ++counts[static_cast<size_t>(std::min(9.0, share * 10))];
        }
        EXPECT_NEAR(outer_half, 500,
                    4 * std::sqrt(250.0));  // the circle of half the area is a little beyond the middle
        double chi_square = 0;
        for (const int count : counts) chi_square += (count - 100.0) * (count - 100.0) / 100;
        EXPECT_LT(chi_square, 27.9);  // 9 degrees of freedom, one in a thousand lies above
    }
}

TEST(Spiral, InsideIsTheBandSeenAlongZ) {
    for (const auto& [name, shape] : kShapes) {
        SCOPED_TRACE(name);
        SpiralHost host(values_of(shape));
        host.run_frames(1);
        std::mt19937 random(kSeed);
        std::uniform_real_distribution<float> place(-110, 110);
        int inside = 0;
        for (int i = 0; i < 1000; ++i) {
            const Point p{place(random), place(random), place(random)};
            const bool within = place_along(shape, p[0], p[1], -0.05) >= 0;
            if (!within && place_along(shape, p[0], p[1], 0.05) >= 0) continue;  // too near to a rim to be told
            inside += within;
            ASSERT_EQ(host.is_inside(p), within) << p[0] << ", " << p[1] << ", seed " << kSeed;
        }
        EXPECT_GT(inside, 10);
    }
}

TEST(Spiral, PointsFollowTheContainerUnderWorldOnly) {
    const Shape ring{50, 50, 1, 2, 0};
    for (const bool world : {false, true}) {
        ParameterValues values = values_of(ring);
        values.emplace_back("coordinates", world ? "World" : "Local");
        values.emplace_back("depth", 8.0);
        SpiralHost host(values);
        host.container(host.spiral).placement = {{1000, 0, 0}, {90, 0, 0}, {2, 2, 2}};  // lies in the XZ plane
        host.run_frames(1);
        for (int i = 0; i < 100; ++i) {
            const Point p = host.spawn_point();
            const double x = world ? (p[0] - 1000) / 2 : p[0], y = world ? p[2] / 2 : p[1],
                         z = world ? -p[1] / 2 : p[2];
            EXPECT_NEAR(std::hypot(x, y), 50, 1.001);
            EXPECT_TRUE(z >= -1e-3 && z <= 8);
            const bool on_a_rim = std::abs(std::hypot(x, y) - 50) > 0.999;
            EXPECT_TRUE(on_a_rim || host.is_inside(p));
        }
        EXPECT_EQ(host.is_inside({1000, 0, 100}), world);
        EXPECT_EQ(host.is_inside({0, 50, 0}), !world);
    }
}

TEST(Spiral, TheSameSeedGivesTheSamePoints) {
    SpiralHost first;
    first.run_frames(1);
    const Point a = first.spawn_point(), b = first.spawn_point();
    SpiralHost second;
    second.run_frames(1);
    EXPECT_EQ(second.spawn_point(), a);
    EXPECT_EQ(second.spawn_point(), b);
    EXPECT_NE(a, b);
}

TEST(Spiral, SpinsBySecondsAndNotByCalls) {
    SpiralHost host({{"inner_radius", 50.0}, {"outer_radius", 50.0}, {"turns", 0.25}, {"spin", 180.0}});
    const Point first_quarter{35.36f, 35.36f, 0}, third_quarter{-35.36f, -35.36f, 0};
    host.run_frames(1);
    for (int i = 0; i < 30; ++i) stage::new_frame(host.stage());  // again in the same frame
    EXPECT_TRUE(host.is_inside(first_quarter) && !host.is_inside(third_quarter));
    host.run_frames(25);  // half a second, and another in which frames are dropped
    stage::advance_frame(host.stage(), 25);
    stage::new_frame(host.stage());
    EXPECT_TRUE(!host.is_inside(first_quarter) && host.is_inside(third_quarter));
}

TEST(Spiral, AnswersNothingElseAndSurvivesAnySlotBits) {
    SpiralHost host;
    EXPECT_EQ(host.ask(0x52414431, nullptr), -1);  // 'RAD1'
    const uint32_t kBits[] = {0x7fc00000, 0x7f800000, 0xff800000, 0xffffffff, 0x00000001, 0x80000000, 0x7fffffff, 0};
    for (const uint32_t bits : kBits) {
        for (int32_t slot = 0; slot < 12; ++slot)
            ASSERT_TRUE(stage::set_slot_bits(host.stage(), host.spiral, slot, bits));
        host.run_frames(2);
        EXPECT_TRUE(stage::call_render(host.stage(), host.spiral, 0, 1.0f));
        const Point point = host.spawn_point();
        EXPECT_TRUE(std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2])) << bits;
        host.is_inside(point);
    }
    EXPECT_THAT(host.complaints(), IsEmpty());
}

TEST(Spiral, IsDrawnAsItsTwoRims) {
    SpiralHost host({{"inner_radius", 10.0}, {"outer_radius", 30.0}, {"turns", 2.0}, {"thickness", 4.0}});
    host.run_frames(1);
    stage::use_opengl(stage::recording_opengl());
    for (const int32_t flags : {0, 1}) {
        host.start_recording();
        ASSERT_TRUE(stage::call_render(host.stage(), host.spiral, flags, 0.5f));
        EXPECT_EQ(host.count_calls("glBegin"), 2);
        EXPECT_EQ(host.count_calls("glEnd"), 2);
        EXPECT_EQ(host.count_calls("glColor4f"), flags == 0 ? 1 : 0);
        EXPECT_EQ(host.count_calls("glVertex3f"), 2 * (2 * 96 + 1));
        const std::vector<std::string> calls = host.calls();
        EXPECT_THAT(calls, testing::Contains("glVertex3f(8, 0, 0)"));  // both rims' beginnings
        EXPECT_THAT(calls, testing::Contains("glVertex3f(12, 0, 0)"));
    }
    stage::stop_recording_calls();
    stage::use_opengl(stage::silent_opengl());
    const auto box = host.container(host.spiral).bounding_box;
    ASSERT_TRUE(box);
    EXPECT_EQ(box->minimum.x, -32);
    EXPECT_EQ(box->maximum.y, 32);
}

TEST(Spiral, ASmokeSpawnsFromItAndDiesOutsideOfIt) {
    const Shape shape{20, 100, 3, 6, 0};
    SpiralHost host(values_of(shape));
    const SmokeHandle still = host.add_smoke({{"spawn_type", "Container"},
                                              {"spawn_cont_name", "spiral"},
                                              {"number_of_particles", 500},
                                              {"birth_rate", 5000.0},
                                              {"initial_speed", 0.0},
                                              {"life_time_scale", 50.0}});
    host.run_frames(20);
    const std::vector<Particle*> inside = host.active(still);
    ASSERT_GT(inside.size(), 100u);
    for (const Particle* particle : inside) {
        EXPECT_GE(place_along(shape, particle->position.x, particle->position.y, 0.01), 0);
        EXPECT_EQ(particle->accelerated, 0);
    }
    ASSERT_TRUE(stage::set_parameter(host.stage(), host.spiral, "outer_radius", 20.0));
    host.run_frames(2);
    int cut = 0, outside = 0;
    for (const Particle* particle : host.active(still)) {
        if (std::hypot(particle->position.x, particle->position.y) < 25) continue;
        ++outside;
        cut += particle->accelerated;
    }
    EXPECT_GT(outside, 50);
    EXPECT_EQ(cut, outside);
    EXPECT_THAT(host.complaints(), IsEmpty());
}

}  // namespace
