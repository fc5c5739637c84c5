// Quads as OpenGL receives them: corner by corner, and through the arrays.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "expect.h"
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

/// Every corner of every quad, by each path.
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

TEST(BothPathsOfDrawing, GiveTheSameQuadsColoursAndTexture) {
    for (const char* reference : {"Local", "World"})
        for (const char* billboard : {"None", "Particle"}) {
            SCOPED_TRACE(std::string(reference) + ", " + billboard);
            RenderHost host;
            host.stage().camera = {
                .position = {40, 30, 200}, .pan_degrees = 20, .tilt_degrees = -10, .roll_degrees = 15};
            const SmokeHandle smoke = host.add_smoke({{"number_of_particles", 150},
                                                      {"birth_rate", 2000.0},
                                                      {"spawn_range_x", 50.0},
                                                      {"rot_start_spread", 90.0},
                                                      {"rot_change", 100.0},
                                                      {"color", "0 1 0 0 1 0 0 1"},
                                                      {"reference", reference},
                                                      {"billboard", billboard}});
            host.container(smoke).placement = {{10, 20, 30}, {15, 25, 35}, {2, 0.5f, 1}};
            host.run_frames(10);
            const BothPaths corners = draw_by_both(host, smoke);
            ASSERT_EQ(12u * 150u, corners.immediate.size());
            EXPECT_THAT(corners.arrays, testing::Pointwise(testing::FloatNear(1e-4f), corners.immediate));

            const stage::RecordedDraw draw = stage::recorded_draws()[0];  // a copy: the next pass forgets it
            host.set(smoke, "use_array", false);
            host.pass(smoke);
            const std::vector<float> sent = numbers_of("glColor4ub");
            ASSERT_EQ(4u * sent.size(), draw.colors.values.size());
            for (size_t i = 0; i < draw.colors.values.size(); ++i)
                ASSERT_EQ(sent[i / 16 * 4 + i % 4], draw.colors.values[i]) << "colour byte " << i;
            EXPECT_EQ(numbers_of("glTexCoord2s"), draw.texcoords.values);
        }
}

// However the camera stands, quads face it upright: seen by it, the left side goes straight up, the upper one straight
// to the right.
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
