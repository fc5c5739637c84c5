// Quads as OpenGL receives them: corner by corner, and through the arrays.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "expect.h"
#include "plain_quads.h"
#include "render_host.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAreArray;

/// The numbers of every call with this name, one after the other.
std::vector<float> numbers_of(std::string_view name) {
    std::vector<float> numbers;
    for (const stage::Call& call : stage::recorded_calls())
        if (call.name == name)
            for (const stage::CallArgument& argument : call.arguments)
                numbers.push_back(static_cast<float>(std::get<double>(argument)));
    return numbers;
}

TEST(ImmediateQuad, IsNineCallsInOrder) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(1, {{"billboard", "None"}});
    Particle& p = *host.active(smoke).at(0);
    p.position = {1, 2, 3};
    p.size_x = 5;
    p.size_y = 10;
    p.color[0] = 10;
    p.color[1] = 20;
    p.color[2] = 30;
    p.alpha = 255;
    Log expected = {logged("glBegin", GL_QUADS),
                    logged("glColor4ub", 10, 20, 30, 127),
                    logged("glTexCoord2s", 0, 32767),
                    logged("glVertex3fv", -4, 12, 3),
                    logged("glTexCoord2s", 0, 0),
                    logged("glVertex3fv", -4, -8, 3),
                    logged("glTexCoord2s", 32767, 0),
                    logged("glVertex3fv", 6, -8, 3),
                    logged("glTexCoord2s", 32767, 32767),
                    logged("glVertex3fv", 6, 12, 3),
                    logged("glEnd")};
    for (const int32_t render_flags : {0, 1}) {
        const Log calls = host.pass(smoke, render_flags, 0.5f);
        const auto begin = std::find(calls.begin(), calls.end(), expected.front());
        EXPECT_THAT(Log(begin, std::find(begin, calls.end(), expected.back()) + 1), ElementsAreArray(expected));
        expected.erase(expected.begin() + 1);  // in a reduced pass the colour is the host's
    }
}

/// The corners of all quads, drawn by both paths.
struct BothPaths {
    std::vector<float> immediate;
    std::vector<float> arrays;
};

BothPaths draw_by_both(RenderHost& host, SmokeHandle smoke, int32_t render_flags = 0) {
    BothPaths paths;
    host.set(smoke, "use_array", false);
    host.pass(smoke, render_flags);
    paths.immediate = numbers_of("glVertex3fv");
    host.set(smoke, "use_array", true);
    host.pass(smoke, render_flags);
    if (stage::recorded_draws().size() == 1) paths.arrays = stage::recorded_draws()[0].vertices.values;
    return paths;
}

/// Accepts an error of 1e-5 of the quad's size, and the rounding error of a large coordinate.
void expect_corners(const plain::Quad& expected, const float* corners, const SmokeInstance& block, const Particle& p) {
    const Vector3 scale = block.draw_mode == kDrawLocalBillboard ? block.abs_scale : Vector3{1, 1, 1};
    const float size = std::max(std::fabs(p.size_x * scale.x), std::fabs(p.size_y * scale.y));
    for (const Vector3 corner : expected.corners) {
        const float far = std::max({std::fabs(corner.x), std::fabs(corner.y), std::fabs(corner.z)});
        expect_near(corner, {corners[0], corners[1], corners[2]}, 1e-5f * size + 2e-7f * far);
        corners += 3;
    }
}

TEST(BothPathsOfDrawing, GiveTheQuadsOfTheMatrices) {
    const std::pair<const char*, stage::ParameterValues> rows[] = {
        {"not turned", {}},
        {"turned at birth", {{"rot_start_spread", 90.0}}},
        {"turning", {{"rot_change", 100.0}}},
        {"turned by many turns", {{"rot_start", 1e7}, {"rot_start_spread", 100.0}}},
        {"turning by a spread", {{"rot_change_spread", 100.0}}},
        {"along the path", {{"rot_follow_path", true}}}};
    for (const auto& [name, values] : rows)
        for (int mode = 0; mode < 4; ++mode) {
            SCOPED_TRACE(testing::Message() << name << ", draw mode " << mode);
            RenderHost host;
            host.stage().camera = {
                .position = {40, 30, 200}, .pan_degrees = 20, .tilt_degrees = -10, .roll_degrees = 15};
            const SmokeHandle smoke = host.add_smoke(with({{"number_of_particles", 131},  // no multiple of a block
                                                           {"birth_rate", 2000.0},
                                                           {"spawn_range_x", 50.0},
                                                           {"life_time_spread", 90.0},
                                                           {"size_birth_spread_x", 90.0},
                                                           {"color", "0 1 0 0 1 0 0 1"},
                                                           {"reference", mode / 2},
                                                           {"billboard", mode % 2}},
                                                          values));
            host.container(smoke).placement = {{10, 20, 30}, {15, 25, 35}, {2, 0.5f, 1}};
            host.run_frames(10);
            host.pass(smoke, 0, 0.7f);
            const std::vector<float> corners = numbers_of("glVertex3fv"), colors = numbers_of("glColor4ub");
            const std::vector<float> texcoords = numbers_of("glTexCoord2s");
            host.set(smoke, "use_array", true);
            host.pass(smoke, 0, 0.7f);
            const stage::RecordedDraw& draw = stage::recorded_draws().at(0);
            EXPECT_EQ(texcoords, draw.texcoords.values);
            const std::vector<Particle*> list = host.active(smoke);
            ASSERT_EQ(131u, list.size());
            ASSERT_EQ(12 * list.size(), corners.size());
            ASSERT_EQ(12 * list.size(), draw.vertices.values.size());
            const SmokeInstance& block = host.block(smoke);
            EXPECT_THAT(block.transformation_copy, ElementsAreArray(block.transformation_matrix.m));
            for (size_t i = 0; i < list.size() && !HasFailure(); ++i) {
                SCOPED_TRACE(testing::Message() << "quad " << i);
                const plain::Quad sent = plain::immediate_quad(block, *list[i], 0.7f);
                const plain::Quad stored = plain::array_quad(block, *list[i], 0.7f);
                expect_corners(sent, &corners[12 * i], block, *list[i]);
                expect_corners(stored, &draw.vertices.values[12 * i], block, *list[i]);
                for (size_t k = 0; k < 4; ++k) EXPECT_EQ(sent.rgba[k], colors.at(4 * i + k)) << "component " << k;
                for (size_t k = 0; k < 16; ++k)
                    EXPECT_EQ(stored.rgba[k % 4], draw.colors.values.at(16 * i + k)) << "byte " << k;
            }
        }
}

TEST(ArrayQuads, TakeTheirColourFromTheTableWhateverARecordHolds) {
    const float odd_numbers[] = {0.0f, -1.0f, 1e38f, -1e38f, INFINITY, -INFINITY, NAN};
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(1, {{"use_array", true}, {"rot_start", 1.0}, {"color", "0 1 1 1 1 0 0 0"}});
    Particle& p = *host.active(smoke).at(0);
    for (const float age : odd_numbers)
        for (const float life : odd_numbers)
            for (const float odd : odd_numbers) {
                p.age = age;
                p.life = life;
                p.rotation = p.size_x = p.position.y = odd;
                host.pass(smoke, 0, odd);
                const auto& colors = stage::recorded_draws().at(0).colors.values;
                EXPECT_TRUE(colors.at(0) == colors.at(1) && colors[1] == colors.at(2)) << age << " of " << life;
            }
}

// In view coordinates the left side of a quad points along +y and its upper side along +x, for every camera.
TEST(BothPathsOfDrawing, FaceTheCamera) {
    const Vector3 rows[] = {{0, 0, 0},    {35, 0, 0},   {-100, 0, 0}, {0, 40, 0},
                            {25, -30, 0}, {140, 60, 0}, {20, 10, 50}, {-60, 5, -110}};
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(1, {{"size_death_x", 5.0}, {"size_death_y", 5.0}});
    stage::Camera& camera = host.stage().camera;
    const auto place_camera = [&](Vector3 turn) {
        camera.pan_degrees = turn.x;
        camera.tilt_degrees = turn.y;
        camera.roll_degrees = turn.z;
        host.run_frames(1);
    };
    for (const Vector3& row : rows) {
        SCOPED_TRACE(testing::Message() << row.x << ", " << row.y << ", " << row.z);
        place_camera(row);
        const stage::Matrix view = stage::view_matrix(camera);
        const BothPaths drawn = draw_by_both(host, smoke, 1);  // reduced passes build the matrix too
        for (const std::vector<float>& corners : {drawn.immediate, drawn.arrays}) {
            const auto seen = [&](size_t corner) {
                return tovu::transform_point(view,
                                             {corners.at(corner), corners.at(corner + 1), corners.at(corner + 2)});
            };
            expect_near({0, 10, 0}, seen(0) - seen(3), 2e-4);
            expect_near({10, 0, 0}, seen(9) - seen(0), 2e-4);
        }
    }
    const Matrix4 before = host.block(smoke).billboard_matrix;
    host.set(smoke, "billboard", "None");
    place_camera({});
    host.pass(smoke);
    EXPECT_THAT(host.block(smoke).billboard_matrix.m, ElementsAreArray(before.m)) << "built only where it is used";
}

TEST(BothPathsOfDrawing, DifferWhereTheyShould) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(1, {{"size_birth_x", 3.0}, {"size_death_x", 3.0}, {"size_death_y", 5.0}});
    host.container(smoke).placement.scale = {0, 0, 1};
    host.run_frames(1);
    const BothPaths scaled = draw_by_both(host, smoke);
    const auto extent = [](const std::vector<float>& corners, size_t axis) {  // from the first corner to the third
        return std::fabs(corners.at(6 + axis) - corners.at(axis));
    };
    EXPECT_NEAR(6, extent(scaled.immediate, 0), 1e-5) << "a factor of 0 leaves the axis alone";
    EXPECT_NEAR(10, extent(scaled.immediate, 1), 1e-5);
    for (const size_t axis : {0u, 1u}) EXPECT_EQ(0, extent(scaled.arrays, axis)) << "a factor of 0 counts";

    host.container(smoke).placement.scale = {1, 1, 1};
    host.run_frames(1);
    host.active(smoke).at(0)->rotation = 90;  // no rotation parameter is set
    const BothPaths turned = draw_by_both(host, smoke);
    EXPECT_LT(turned.immediate.at(1), 0) << "turned: the first corner is at the bottom left";
    EXPECT_GT(turned.arrays.at(1), 0) << "not turned: the first corner is at the top left";
}

}  // namespace
}  // namespace tovu
