// Compares births with a second implementation of their rules, which draws the same random numbers in the same order.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "allocation_count.h"
#include "math/polygon.h"
#include "random_seed.h"
#include "render_host.h"

namespace tovu {
namespace {

constexpr double kPeriod = 0.02;
constexpr int kBirths = 25;
constexpr double kPi = 3.14159265358979323846;

struct Vec {
    double x, y, z;
};

double draw(double limit) {
    return (std::rand() >> 16) * limit / 32767.0;
}

double cosine(double degrees) {
    return std::cos(degrees * kPi / 180);
}
double sine(double degrees) {
    return std::sin(degrees * kPi / 180);
}
Vec turn_x(Vec v, double a) {
    return {v.x, v.y * cosine(a) - v.z * sine(a), v.y * sine(a) + v.z * cosine(a)};
}
Vec turn_y(Vec v, double a) {
    return {v.x * cosine(a) + v.z * sine(a), v.y, v.z * cosine(a) - v.x * sine(a)};
}
Vec turn_z(Vec v, double a) {
    return {v.x * cosine(a) - v.y * sine(a), v.x * sine(a) + v.y * cosine(a), v.z};
}
Vec unit(Vec v) {
    const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    return length == 0 ? v : Vec{v.x / length, v.y / length, v.z / length};
}
Vector3 single(Vec v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

/// A mask image, first row first; pixels other than 0 are lit.
struct Mask {
    int columns, rows;
    std::vector<uint8_t> pixels;
    bool lit_at(double column, double row) const {
        const int c = std::clamp(static_cast<int>(column), 0, columns - 1);
        const int pixel = std::clamp(static_cast<int>(row), 0, rows - 1) * columns + c;
        return pixels[static_cast<size_t>(pixel)] != 0;
    }
};

/// The rules of births and their inputs.
struct Rules {
    const ParameterSlots& p;
    stage::Placement at;
    const Mask& mask;
    const std::vector<Vector3>& outline;  // across and along in x and y, from (10, 20) to (110, 70)

    double spread(double base, double percent) const {
        const double half = base * percent / 100;
        return half == 0 ? base : base - half + draw(2 * half);
    }
    static double around(double base, double spread) { return spread == 0 ? base : base + draw(spread) - spread / 2; }

    // Scaled, then turned about z, y and x.
    Vec to_world(Vec v) const {
        const Vector3 r = at.rotation_degrees;
        return turn_x(turn_y(turn_z({v.x * at.scale.x, v.y * at.scale.y, v.z * at.scale.z}, r.z), r.y), r.x);
    }
    Vec cube() const {
        Vec v{};
        if (p.spawn_range_x != 0) v.x = draw(p.spawn_range_x) - p.spawn_range_x / 2;
        if (p.spawn_range_y != 0) v.y = draw(p.spawn_range_y) - p.spawn_range_y / 2;
        if (p.spawn_range_z != 0) v.z = draw(p.spawn_range_z) - p.spawn_range_z / 2;
        return v;
    }
    Vec sphere() const {
        Vec u{};
        if (p.spawn_range_x != 0) u.x = draw(1) - 0.5;
        if (p.spawn_range_y != 0) u.y = draw(1) - 0.5;
        if (p.spawn_range_z != 0) u.z = draw(1) - 0.5;
        if (u.x == 0 && u.y == 0 && u.z == 0) return u;
        const double reach = (1 - draw(p.spawn_offset / 100)) / 2;
        u = unit(u);
        return {u.x * reach * p.spawn_range_x, u.y * reach * p.spawn_range_y, u.z * reach * p.spawn_range_z};
    }
    // In float32, as some candidates lie on an edge.
    Vec container() const {
        for (;;) {
            const float x = 10 + static_cast<float>(draw(2 * 100));
            const float along = 20 + static_cast<float>(draw(2 * 50));
            const auto corners = static_cast<int32_t>(outline.size());
            if (!point_in_polygon_xy(corners, outline.data(), {x, along, 0})) continue;
            const double third = -3 + (p.spawn_range_z > 0 ? draw(2 * p.spawn_range_z) : 0);
            return p.spawn_cont_ref_plane != 0 ? Vec{x, third, along} : Vec{x, along, third};
        }
    }
    Vec image() const {
        for (;;) {
            const double x = draw(2 * p.spawn_range_x);
            const double y = draw(2 * p.spawn_range_y);
            if (!mask.lit_at(x * mask.columns / p.spawn_range_x, y * mask.rows / p.spawn_range_y)) continue;
            const double z = p.spawn_range_z > 0 ? draw(2 * p.spawn_range_z) : 0;
            return {x - p.spawn_range_x / 2, y - p.spawn_range_y / 2, z};
        }
    }
    Vec position() const {
        return p.spawn_type == 1 ? sphere() : p.spawn_type == 2 ? container() : p.spawn_type == 3 ? image() : cube();
    }
    Vec direction(Vec position) const {
        if (p.initial_align_to_spawn_center) return unit(position);
        const double across = p.opening_angle_x / 180.0;
        const double swing = p.opening_angle_z * kPi / 180;
        const double theta = across == 0 ? kPi / 2 : std::acos(std::clamp(draw(2 * across) - across, -1.0, 1.0));
        const double phi = swing == 0 ? 0 : draw(swing) - swing / 2;
        Vec d{-std::cos(theta), std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi)};
        d = turn_x(turn_z(turn_y(d, p.opening_angle_twist), p.initial_rot_z), p.initial_rot_x);
        return p.reference ? to_world(d) : d;
    }

    /// Compares a particle at the end of the step of its birth.
    void expect_newborn(const Particle& particle) const {
        const auto near = [](double expected, float value, const char* what) {
            EXPECT_NEAR(expected, value, 4e-6 * (1 + std::fabs(expected))) << what;
        };
        // The arc cosine is less exact near -1 and 1.
        const auto near_in_space = [](Vec expected, Vector3 value, const char* what) {
            EXPECT_NEAR(expected.x, value.x, 2e-5 * (10 + std::fabs(expected.x))) << what << " x";
            EXPECT_NEAR(expected.y, value.y, 2e-5 * (10 + std::fabs(expected.y))) << what << " y";
            EXPECT_NEAR(expected.z, value.z, 2e-5 * (10 + std::fabs(expected.z))) << what << " z";
        };
        Vec at_birth = position();
        const double life = spread(p.life_time, p.life_time_spread);
        const double frames = life / kPeriod + 1;
        const Vec d = direction(at_birth);
        const double speed = spread(p.initial_speed, p.initial_speed_spread) * kPeriod;
        const double r = draw(1);
        const auto size_at = [r](double base, double percent) { return base * (1 + (2 * r - 1) * percent / 100); };
        const double scale_x = p.reference ? at.scale.x : 1;
        const double scale_y = p.reference ? at.scale.y : 1;
        const double size_x = size_at(p.size_birth_x, p.size_birth_spread_x) * scale_x;
        const double size_y = size_at(p.size_birth_y, p.size_birth_spread_y) * scale_y;
        const double step_x = (size_at(p.size_death_x, p.size_death_spread_x) * scale_x - size_x) / frames;
        const double step_y = (size_at(p.size_death_y, p.size_death_spread_y) * scale_y - size_y) / frames;
        const double rotation = around(p.rot_start, p.rot_start_spread);
        const double turn = around(p.rot_change, p.rot_change_spread) * kPeriod;
        if (p.reference) {
            const Vec v = to_world(at_birth);
            at_birth = {v.x + at.position.x, v.y + at.position.y, v.z + at.position.z};
        }
        const Vec velocity{d.x * speed, d.y * speed, d.z * speed};
        near_in_space(velocity, particle.velocity, "velocity");
        near_in_space({at_birth.x + velocity.x, at_birth.y + velocity.y, at_birth.z + velocity.z}, particle.position,
                      "position");
        near(life, particle.life, "life");
        near(step_x, particle.size_step_x, "size step x");
        near(step_y, particle.size_step_y, "size step y");
        near(size_x + step_x, particle.size_x, "size x");
        near(size_y + step_y, particle.size_y, "size y");
        near(turn, particle.rotation_step, "rotation step");
        near(rotation + turn, particle.rotation, "rotation");
        EXPECT_EQ(static_cast<float>(kPeriod), particle.age);
        EXPECT_EQ(0, particle.accelerated + particle.claimed + particle.released);
    }
};

const stage::ParameterValues kBox = {{"spawn_range_x", 40.0}, {"spawn_range_y", 60.0}, {"spawn_range_z", 10.0}};

const stage::ParameterValues kSpreads = {{"life_time_spread", 50.0},    {"initial_speed_spread", 100.0},
                                         {"rot_start", 20.0},           {"rot_start_spread", 90.0},
                                         {"rot_change", 45.0},          {"rot_change_spread", 60.0},
                                         {"size_birth_spread_x", 40.0}, {"size_birth_spread_y", 10.0},
                                         {"size_death_spread_x", 70.0}, {"size_death_spread_y", 100.0},
                                         {"size_birth_y", 8.0},         {"size_death_y", 1.0}};

const Mask kMask{2, 2, {1, 0, 255, 2}};
Mask with_one_lit(int columns, int rows) {
    const int count = columns * rows, lit = columns * (rows / 2) + columns / 3;
    Mask mask{columns, rows, std::vector<uint8_t>(static_cast<size_t>(count))};
    mask.pixels[static_cast<size_t>(lit)] = 1;
    return mask;
}
const Mask kOneOf96 = with_one_lit(12, 8);
const Mask kOneOf512 = with_one_lit(32, 16);

const struct {
    const char* name;
    stage::ParameterValues values;
    const Mask* mask = &kMask;
    float lower = 20;  // end of the triangle's upright side
} kEmissions[] = {
    {"as registered", {}},
    {"box", kBox},
    {"box without y", with(kBox, {{"spawn_range_y", 0.0}})},
    {"ellipsoid", with(kBox, {{"spawn_type", 1}})},
    {"flat ellipsoid with a core", with(kBox, {{"spawn_type", 1}, {"spawn_range_z", 0.0}, {"spawn_offset", 30.0}})},
    {"ellipsoid's surface still draws its offset", with(kBox, {{"spawn_type", 1}, {"spawn_offset", 0.0}})},
    {"ellipsoid of no extent draws none", {{"spawn_type", 1}}},
    {"triangle", {{"spawn_type", 2}}},
    {"triangle with depth", {{"spawn_type", 2}, {"spawn_range_z", 10.0}}},
    {"triangle in x-z",
     {{"spawn_type", 2}, {"spawn_range_z", 10.0}, {"spawn_cont_ref_plane", 1}, {"spawn_cont_name", "standing"}}},
    {"mask", {{"spawn_type", 3}, {"spawn_range_x", 40.0}, {"spawn_range_y", 60.0}}},
    {"mask with depth", with(kBox, {{"spawn_type", 3}})},
    {"mask of which a 96th is lit", with(kBox, {{"spawn_type", 3}}), &kOneOf96},
    {"triangle of a 384th of the candidates", {{"spawn_type", 2}}, &kMask, 70 - 100.0f / 96},
    {"no opening", {{"opening_angle_x", 0.0}, {"opening_angle_z", 0.0}}},
    {"opening in x alone", {{"opening_angle_x", 180.0}, {"opening_angle_z", 0.0}}},
    {"wider than a half-turn", {{"opening_angle_x", 360.0}}},
    {"twist and turns", {{"opening_angle_twist", 70.0}, {"initial_rot_x", 30.0}, {"initial_rot_z", 100.0}}},
    {"away from the centre", with(kBox, {{"initial_align_to_spawn_center", true}, {"initial_rot_x", 30.0}})},
    {"away from the centre, at it", {{"initial_align_to_spawn_center", true}}},
    {"every spread", kSpreads},
    {"in the world", with(kBox, {{"reference", 1}, {"initial_rot_z", 40.0}, {"opening_angle_twist", 20.0}})},
    {"in the world, away from the centre", with(kBox, {{"reference", 1}, {"initial_align_to_spawn_center", true}})},
};

TEST(Emission, EveryFieldFromTheSameDraws) {
    const RandomSeed seed;
    for (const auto& row : kEmissions) {
        SCOPED_TRACE(row.name);
        TestHost host(1, kPeriod);
        stage::add_image(host.stage(), "mask", row.mask->columns, row.mask->rows, GL_LUMINANCE, row.mask->pixels);
        const std::vector<Vector3> triangle = {{10, 20, -3}, {110, row.lower, -3}, {110, 70, -3}};
        host.add_outlines("triangle", {{triangle}});
        host.add_outlines("standing", {{{{10, -3, 20}, {110, -3, 20}, {110, -3, 70}}}});
        const SmokeHandle smoke = host.add_smoke(with({{"number_of_particles", kBirths},
                                                       {"birth_rate", 0.0},
                                                       {"spawn_image", "mask"},
                                                       {"spawn_cont_name", "triangle"}},
                                                      row.values));
        host.container(smoke).placement = {{100, -50, 20}, {20, 70, -40}, {2, 3, 0.5f}};
        host.run_frames(2);
        host.set(smoke, "birth_rate", 1e7);
        std::srand(seed.value);
        host.run_frames(1);
        const int behind = std::rand();
        const std::vector<Particle*> born = host.active(smoke);
        ASSERT_EQ(static_cast<size_t>(kBirths), born.size());
        std::srand(seed.value);
        const Rules rules{host.block(smoke).parameters, host.container(smoke).placement, *row.mask, triangle};
        for (size_t i = born.size(); i-- > 0 && !testing::Test::HasFailure();)
            rules.expect_newborn(*born[i]);  // oldest first
        EXPECT_EQ(behind, std::rand()) << "as many draws, no more";
        const ParameterSlots& p = rules.p;
        const Vec centre = turn_x(turn_z({0, p.initial_speed, 0}, p.initial_rot_z), p.initial_rot_x);
        expect_near(single(p.reference ? rules.to_world(centre) : centre), host.block(smoke).emission_vector, 1e-3);
        EXPECT_TRUE(host.complaints().empty());
    }
}

constexpr int kMostRejected = 16384 + 5 * kBirths;
constexpr double kRate = (kBirths + 0.2) / (3 * kPeriod);  // the time of two frames before is due as well

// A birth without a point still draws two values for its direction and one for its size.
TEST(Emission, WithoutAPointTheRecordReturnsToThePool) {
    const RandomSeed seed;
    const struct {
        const char* name;
        stage::ParameterValues values;
        int draws;
    } rows[] = {
        {"a shape without area", {{"spawn_type", 2}, {"spawn_cont_name", "hook"}}, 2 * kMostRejected + kBirths * 3},
        {"a dark mask", with(kBox, {{"spawn_type", 3}, {"spawn_image", "dark"}}), 2 * kMostRejected + kBirths * 3},
        {"a mask that is too narrow",
         with(kBox, {{"spawn_type", 3}, {"spawn_image", "dark"}, {"spawn_range_y", 0.0099}}), 0},
        {"no mask", with(kBox, {{"spawn_type", 3}}), 0},
        {"no container", {{"spawn_type", 2}}, 0},
        {"an unknown container", {{"spawn_type", 2}, {"spawn_cont_name", "nowhere"}}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestHost host(1, kPeriod);
        stage::add_image(host.stage(), "dark", 2, 2, GL_RGB, {0, 9, 9, 0, 9, 9, 0, 9, 9, 0, 9, 9});
        host.add_outlines("hook", {{{{0, 0, 0}, {100, 0, 0}, {100, 50, 0}, {100, 0, 0}}}});
        const SmokeHandle smoke =
            host.add_smoke(with(row.values, {{"number_of_particles", kBirths}, {"birth_rate", 0.0}}));
        host.run_frames(2);
        host.set(smoke, "birth_rate", kRate);
        std::srand(seed.value);
        host.run_frames(1);
        EXPECT_EQ(row.draws, draws_since(seed.value));
        EXPECT_EQ(0, host.active_count(smoke));
        EXPECT_EQ(static_cast<size_t>(kBirths), host.inactive(smoke).size());
        EXPECT_NEAR(0.2 / kRate, host.block(smoke).birth_accumulator, 1e-5) << "25 were made or lost";
    }
}

// A point drawn directly takes six values; direction and size take three.
TEST(Emission, RejectionsAreCountedOverTheWholeCall) {
    const RandomSeed seed;
    TestHost host(1, kPeriod);
    const Mask& mask = kOneOf512;
    stage::add_image(host.stage(), "mask", mask.columns, mask.rows, GL_LUMINANCE, mask.pixels);
    const SmokeHandle smoke = host.add_smoke(with(kBox, {{"number_of_particles", kBirths},
                                                         {"birth_rate", 0.0},
                                                         {"initial_speed", 0.0},
                                                         {"spawn_type", 3},
                                                         {"spawn_range_z", 0.0},
                                                         {"spawn_image", "mask"}}));
    host.run_frames(2);
    host.set(smoke, "birth_rate", kRate);
    std::srand(seed.value);
    host.run_frames(1);
    const int behind = std::rand();
    const std::vector<Particle*> born = host.active(smoke);
    ASSERT_EQ(static_cast<size_t>(kBirths), born.size());
    std::srand(seed.value);
    int found = 0;
    for (int rejected = 0; rejected < kMostRejected;) {
        const float x = -20 + static_cast<float>(draw(80));
        const float y = -30 + static_cast<float>(draw(120));
        if (!mask.lit_at((x + 20) * 32 / 40, (y + 30) * 16 / 60)) {
            ++rejected;
            continue;
        }
        const Particle& p = *born[born.size() - 1 - static_cast<size_t>(found++)];
        EXPECT_EQ(x, p.position.x);
        EXPECT_EQ(y, p.position.y);
        for (int i = 0; i < 3; ++i) std::rand();
    }
    EXPECT_GT(found, 0);
    ASSERT_LT(found, kBirths);
    for (int i = 0; i < (kBirths - found) * 9; ++i) std::rand();
    EXPECT_EQ(behind, std::rand());
    for (const Particle* p : born)
        EXPECT_TRUE(mask.lit_at((p->position.x + 20) * 32 / 40, (p->position.y + 30) * 16 / 60));
}

#if !defined(__SANITIZE_ADDRESS__)  // its allocator is not counted
// Ten frames of smokes born in both kinds of area, and of a smoke without births.
TEST(Emission, SteadyFramesAllocateNothing) {
    const auto allocations = [](const stage::ParameterValues& values) {
        TestHost host(1, kPeriod);
        stage::add_image(host.stage(), "sparse", 32, 16, GL_LUMINANCE, kOneOf512.pixels);
        host.add_outlines("thin", {{{{0, 0, 0}, {100, 100, 0}, {100, 100.01f, 0}}}});
        const SmokeHandle smoke = host.add_smoke(with(
            kBox, with({{"number_of_particles", 3 * kBirths}, {"birth_rate", 1250.0}, {"life_time", 0.05}}, values)));
        host.run_frames(10);
        const long before = allocation_count();
        host.run_frames(10);
        const long after = allocation_count();
        EXPECT_EQ(values.size() == 1, host.active_count(smoke) == 0);
        return after - before;
    };
    const long without_births = allocations({{"birth_rate", 0.0}});
    EXPECT_EQ(without_births, allocations({{"spawn_type", 3}, {"spawn_image", "sparse"}}));
    EXPECT_EQ(without_births, allocations({{"spawn_type", 2}, {"spawn_cont_name", "thin"}}));
}
#endif

}  // namespace
}  // namespace tovu
