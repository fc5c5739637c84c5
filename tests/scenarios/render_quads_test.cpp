// Quads as OpenGL receives them: corner by corner, and through the arrays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "render_host.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAreArray;

/// The numbers of every call with this name, one after the other.
std::vector<float> numbers_of(const std::vector<stage::Call>& calls, std::string_view name) {
    std::vector<float> numbers;
    for (const stage::Call& call : calls)
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
    const Log corners = {logged("glTexCoord2s", 0, 32767),     logged("glVertex3fv", -4, 12, 3),
                         logged("glTexCoord2s", 0, 0),         logged("glVertex3fv", -4, -8, 3),
                         logged("glTexCoord2s", 32767, 0),     logged("glVertex3fv", 6, -8, 3),
                         logged("glTexCoord2s", 32767, 32767), logged("glVertex3fv", 6, 12, 3)};
    Log full = {logged("glBegin", GL_QUADS), logged("glColor4ub", 10, 20, 30, 127)};
    full.insert(full.end(), corners.begin(), corners.end());
    full.push_back(logged("glEnd"));
    EXPECT_THAT(between(host.pass(smoke, 0, 0.5f), "glBegin", "glEnd"), ElementsAreArray(full));

    Log reduced = full;
    reduced.erase(reduced.begin() + 1);  // the colour is the host's
    EXPECT_THAT(between(host.pass(smoke, 1, 0.5f), "glBegin", "glEnd"), ElementsAreArray(reduced));
}

/// Every corner of every quad, by each path.
struct BothPaths {
    std::vector<float> immediate;
    std::vector<float> arrays;
};

BothPaths draw_by_both(RenderHost& host, SmokeHandle smoke) {
    BothPaths paths;
    host.set(smoke, "use_array", false);
    host.pass(smoke);
    paths.immediate = numbers_of(stage::recorded_calls(), "glVertex3fv");
    host.set(smoke, "use_array", true);
    host.pass(smoke);
    if (stage::recorded_draws().size() == 1) paths.arrays = stage::recorded_draws()[0].vertices.values;
    return paths;
}

struct ModeCase {
    const char* reference;
    const char* billboard;
};

TEST(BothPathsOfDrawing, GiveTheSameQuadsColoursAndTexture) {
    const ModeCase modes[] = {{"Local", "None"}, {"Local", "Particle"}, {"World", "None"}, {"World", "Particle"}};
    for (const ModeCase& mode : modes) {
        SCOPED_TRACE(std::string(mode.reference) + ", " + mode.billboard);
        RenderHost host;
        host.stage().camera = {.position = {40, 30, 200}, .pan_degrees = 20, .tilt_degrees = -10, .roll_degrees = 15};
        const SmokeHandle smoke = host.add_smoke({{"number_of_particles", 150},
                                                  {"birth_rate", 2000.0},
                                                  {"spawn_range_x", 50.0},
                                                  {"rot_start_spread", 90.0},
                                                  {"rot_change", 100.0},
                                                  {"color", "0 1 0 0 1 0 0 1"},
                                                  {"reference", mode.reference},
                                                  {"billboard", mode.billboard}});
        host.container(smoke).placement = {{10, 20, 30}, {15, 25, 35}, {2, 0.5f, 1}};
        host.run_frames(10);
        ASSERT_EQ(150, host.active_count(smoke));
        host.set(smoke, "use_array", false);
        host.run_frames(1);  // stores the colours in the records

        const BothPaths corners = draw_by_both(host, smoke);
        ASSERT_EQ(12u * 150u, corners.immediate.size());
        ASSERT_EQ(corners.immediate.size(), corners.arrays.size());
        for (size_t i = 0; i < corners.arrays.size(); ++i)
            ASSERT_NEAR(corners.immediate[i], corners.arrays[i], 1e-4f) << "number " << i;

        const stage::RecordedDraw draw = stage::recorded_draws()[0];  // a copy: the next pass forgets it
        host.set(smoke, "use_array", false);
        host.pass(smoke, 0, 1.0f);
        const std::vector<float> sent = numbers_of(stage::recorded_calls(), "glColor4ub");
        ASSERT_EQ(4u * sent.size(), draw.colors.values.size());
        for (size_t i = 0; i < draw.colors.values.size(); ++i)
            ASSERT_EQ(sent[i / 16 * 4 + i % 4], draw.colors.values[i]) << "colour byte " << i;
        EXPECT_EQ(numbers_of(stage::recorded_calls(), "glTexCoord2s"), draw.texcoords.values);
    }
}

TEST(BothPathsOfDrawing, DifferWhereTheyShould) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(1, {{"size_birth_x", 3.0}, {"size_death_x", 3.0}});
    const auto width = [](const std::vector<float>& corners) { return std::fabs(corners.at(6) - corners.at(0)); };

    host.container(smoke).placement.scale = {0, 1, 1};
    host.run_frames(1);
    const BothPaths scaled = draw_by_both(host, smoke);
    EXPECT_NEAR(6, width(scaled.immediate), 1e-5) << "a factor of 0 leaves the axis alone";
    EXPECT_EQ(0, width(scaled.arrays)) << "a factor of 0 counts";

    host.container(smoke).placement.scale = {1, 1, 1};
    host.run_frames(1);
    host.active(smoke).at(0)->rotation = 90;  // no rotation parameter is set
    const BothPaths turned = draw_by_both(host, smoke);
    EXPECT_LT(turned.immediate.at(1), 0) << "turned: the first corner is at the bottom left";
    EXPECT_GT(turned.arrays.at(1), 0) << "not turned: the first corner is at the top left";
}

TEST(ArrayQuads, FadeOutAtTheEndOfLife) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(2, {{"use_array", true}, {"billboard", "None"}});
    const std::vector<Particle*> active = host.active(smoke);
    active.at(0)->age = active.at(0)->life;
    active.at(1)->age = active.at(1)->life = 0;  // no fraction of a life: as at its end
    host.pass(smoke);
    ASSERT_EQ(1u, stage::recorded_draws().size());
    EXPECT_THAT(stage::recorded_draws()[0].colors.values, testing::AllOf(testing::SizeIs(32), testing::Each(0)));
}

}  // namespace
}  // namespace tovu
