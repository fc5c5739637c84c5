// The sample that supplies spawn points: requests from the test, and from a smoke.
#include <gmock/gmock.h>
#include <tovu/spawn_requests.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "expect.h"
#include "random_seed.h"
#include "stage/opengl_table/recording_opengl.h"
#include "test_host.h"

namespace tovu {
namespace {

const uint32_t kSeed = random_seed();

struct Shape {
    double inner, outer, turns, thickness, angle;
};
const std::pair<const char*, Shape> kShapes[] = {
    {"a spiral", {20, 100, 3, 6, 0}},
    {"part of a ring", {50, 50, 0.25, 10, 200}},
    {"inward", {90, 30, 1, 40, -50}},
};

stage::ParameterValues values_of(const Shape& shape) {
    return {{"inner_radius", shape.inner},
            {"outer_radius", shape.outer},
            {"turns", shape.turns},
            {"thickness", shape.thickness},
            {"angle", shape.angle}};
}

// The position of a point along the band, 0 to 1; below 0 if it is more than `slack` away from the band. The band
// passes the angle of the point once per turn.
double place_along(const Shape& shape, double x, double y, double slack) {
    const double radius = std::hypot(x, y);
    const double angle = (std::atan2(y, x) * 180 / std::numbers::pi - shape.angle) / 360;
    const double first_turn = angle - std::floor(angle) - 1;
    for (int passed = 0; first_turn + passed <= shape.turns + 1; ++passed) {
        const double turn = first_turn + passed;
        const double along = std::clamp(turn / shape.turns, 0.0, 1.0);
        const double beyond_end = std::abs(turn - along * shape.turns) * 2 * std::numbers::pi * radius;
        const double off_middle = std::abs(radius - shape.inner - (shape.outer - shape.inner) * along);
        if (beyond_end <= std::max(slack, 1e-9) && off_middle <= shape.thickness / 2 + slack) return along;
    }
    return -1;
}

struct SpiralHost : TestHost {
    explicit SpiralHost(const stage::ParameterValues& values = {}) : TestHost(kSeed) {
        spiral = stage::add_container(stage(), "spiral");
        add_instance(spiral, TOVU_SPIRAL_PLUGIN, values);
    }
    // Sends a request. Returns the answer, or -1 if none was written.
    int32_t ask(int32_t request, void* data) {
        int32_t reply = -1;
        EXPECT_TRUE(stage::dispatch(stage(), spiral, request, data, &reply));
        return reply;
    }
    Vector3 spawn_point() {
        Vector3 point{NAN, NAN, NAN};
        EXPECT_EQ(ask(TOVU_REQUEST_NEW_SPAWN_POINT, &point), 1);
        return point;
    }
    bool is_inside(Vector3 point) { return ask(TOVU_REQUEST_IS_INSIDE, &point) != 0; }

    int32_t spiral = -1;
};

TEST(Spiral, SpawnPointsAreEvenlySpreadOverTheBand) {
    for (const auto& [name, shape] : kShapes) {
        SCOPED_TRACE(name);
        SpiralHost host(values_of(shape));
        ASSERT_EQ(host.ask(TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, nullptr), 1) << "before the first frame";
        // 1000 points in ten equal areas. The square of the middle line's radius is linear in the area.
        std::array<int, 10> counts{};
        int outer_half = 0;  // points in the outer half of the band's area
        for (int i = 0; i < 1000; ++i) {
            const Vector3 p = host.spawn_point();
            EXPECT_EQ(p.z, 0);
            const double along = place_along(shape, p.x, p.y, 1e-3);
            ASSERT_GE(along, 0) << p.x << ", " << p.y << ", seed " << kSeed;
            const double inner = shape.inner, outer = shape.outer, radius = inner + (outer - inner) * along;
            outer_half += std::hypot(p.x, p.y) > std::hypot(radius, shape.thickness / 2);
            const double share =
                inner == outer ? along : (radius * radius - inner * inner) / (outer * outer - inner * inner);
            ++counts[static_cast<size_t>(std::min(9.0, share * 10))];
        }
        EXPECT_NEAR(outer_half, 500, 4 * std::sqrt(250.0));
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
            const Vector3 p{place(random), place(random), place(random)};
            const bool within = place_along(shape, p.x, p.y, -0.05) >= 0;
            if (!within && place_along(shape, p.x, p.y, 0.05) >= 0) continue;  // too near to a rim for float
            inside += within;
            ASSERT_EQ(host.is_inside(p), within) << p.x << ", " << p.y << ", seed " << kSeed;
        }
        EXPECT_GT(inside, 10);
    }
}

TEST(Spiral, PointsFollowTheContainerUnderWorldOnly) {
    for (const bool world : {false, true}) {
        SpiralHost host(
            with(values_of({50, 50, 1, 2, 0}), {{"coordinates", world ? "World" : "Local"}, {"depth", 8.0}}));
        host.container(host.spiral).placement = {{1000, 0, 0}, {90, 0, 0}, {2, 2, 2}};  // lies in the XZ plane
        host.run_frames(1);
        for (int i = 0; i < 100; ++i) {
            const Vector3 p = host.spawn_point();
            const Vector3 local = world ? Vector3{(p.x - 1000) / 2, p.z / 2, -p.y / 2} : p;
            const double off_middle = std::hypot(local.x, local.y) - 50;
            EXPECT_NEAR(off_middle, 0, 1.001);
            EXPECT_TRUE(local.z >= -1e-3 && local.z <= 8);
            EXPECT_TRUE(std::abs(off_middle) > 0.999 || host.is_inside(p));
        }
        EXPECT_EQ(host.is_inside({1000, 0, 100}), world);
        EXPECT_EQ(host.is_inside({0, 50, 0}), !world);
    }
}

TEST(Spiral, SpinsBySecondsAndNotByCalls) {
    SpiralHost host({{"inner_radius", 50.0}, {"outer_radius", 50.0}, {"turns", 0.25}, {"spin", 180.0}});
    const Vector3 first_quarter{35.36f, 35.36f, 0}, third_quarter{-35.36f, -35.36f, 0};
    host.run_frames(1);
    for (int i = 0; i < 30; ++i) stage::new_frame(host.stage());  // again in the same frame
    EXPECT_TRUE(host.is_inside(first_quarter) && !host.is_inside(third_quarter));
    host.run_frames(25);  // half a second, then half a second of dropped frames
    stage::advance_frame(host.stage(), 25);
    stage::new_frame(host.stage());
    EXPECT_TRUE(!host.is_inside(first_quarter) && host.is_inside(third_quarter));
}

TEST(Spiral, AnswersNothingElseAndSurvivesAnySlotBits) {
    SpiralHost host;
    EXPECT_EQ(host.ask(0x52414431, nullptr), -1);  // 'RAD1'
    for (const uint32_t bits : {0x7fc00000u, 0x7f800000u, 0xff800000u, 0xffffffffu, 1u, 0x80000000u, 0x7fffffffu, 0u}) {
        for (int32_t slot = 0; slot < 12; ++slot)
            ASSERT_TRUE(stage::set_slot_bits(host.stage(), host.spiral, slot, bits));
        host.run_frames(2);
        EXPECT_TRUE(stage::call_render(host.stage(), host.spiral, 0, 1.0f));
        const Vector3 point = host.spawn_point();
        EXPECT_TRUE(std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z)) << bits;
        host.is_inside(point);
    }
    EXPECT_THAT(host.complaints(), testing::IsEmpty());
}

// A pass may come before the first frame.
TEST(Spiral, IsDrawnAsItsTwoRims) {
    SpiralHost host({{"inner_radius", 10.0}, {"outer_radius", 30.0}, {"turns", 2.0}, {"thickness", 4.0}});
    stage::use_opengl(stage::recording_opengl());
    for (const int32_t flags : {0, 1}) {
        host.start_recording();
        ASSERT_TRUE(stage::call_render(host.stage(), host.spiral, flags, 0.5f));
        EXPECT_EQ(host.count_calls("glColor4f"), flags == 0 ? 1 : 0);
        EXPECT_EQ(host.count_calls("glVertex3f"), 2 * (2 * 96 + 1));
        EXPECT_THAT(host.calls(), testing::IsSupersetOf({"glVertex3f(8, 0, 0)", "glVertex3f(12, 0, 0)"}));
    }
    stage::stop_recording_calls();
    stage::use_opengl(stage::silent_opengl());
    host.run_frames(1);
    expect_near({32, 32, 0}, host.container(host.spiral).bounding_box.value().maximum, 0);
}

TEST(Spiral, ASmokeSpawnsFromItAndDiesOutsideOfIt) {
    const Shape& shape = kShapes[0].second;
    SpiralHost host(values_of(shape));
    const SmokeHandle smoke = host.add_smoke({{"spawn_type", "Container"},
                                              {"spawn_cont_name", "spiral"},
                                              {"birth_rate", 5000.0},
                                              {"initial_speed", 0.0},
                                              {"life_time_scale", 50.0}});
    host.run_frames(5);
    const std::vector<Particle*> born = host.active(smoke);
    ASSERT_EQ(100u, born.size());
    for (const Particle* p : born) {
        EXPECT_GE(place_along(shape, p->position.x, p->position.y, 0.01), 0);
        EXPECT_EQ(p->accelerated, 0);
    }
    host.set(host.spiral, "outer_radius", 20.0);
    host.run_frames(2);
    for (const Particle* p : born) EXPECT_TRUE(p->accelerated || std::hypot(p->position.x, p->position.y) < 25);
    EXPECT_THAT(host.complaints(), testing::IsEmpty());
}

}  // namespace
}  // namespace tovu
