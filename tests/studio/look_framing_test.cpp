// The camera and pre-warming of a new scene.
#include "apps/studio/look_framing.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "stage/scenefile/scene_reader.h"

namespace tovu {
namespace {

struct FramingCase {
    const char* name;
    double x, y, width, height;  // of a plate
    double seen;                 // height of the picture in the plane of the plate
};

void PrintTo(const FramingCase& row, std::ostream* stream) {
    *stream << row.name;
}

// The plate must fill two thirds of the picture's height or width.
const FramingCase kFramings[] = {
    {"a high plate", 30, 40, 40, 60, 90},
    {"a wide one", -300, 0, 1600, 60, 1350},
    {"a small one far from the middle", 0, 90, 10, 10, 15},
    {"one outside the first picture", 0, -2000, 4000, 4000, 6000},
};

class Framings : public testing::TestWithParam<FramingCase> {};

TEST_P(Framings, FillTwoThirdsOfThePicture) {
    const FramingCase& row = GetParam();
    const auto scene = stage::read_scene(
        fmt::format("[[container]]\nname = \"plate\"\nposition = [{}, {}, 0]\n"
                    "geometry = {{ kind = \"rectangle\", width = {}, height = {}, fill = [1, 1, 1] }}\n",
                    row.x, row.y, row.width, row.height),
        "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    const auto framing = measure_framing(*scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(framing) << framing.error().message;
    const double distance = row.seen / 2 / std::tan(22.5 * std::numbers::pi / 180);
    const double tolerance = 0.06 * distance;  // the measured picture has few pixels, and 2 % at each edge do not count
    EXPECT_NEAR(framing->camera[0], row.x, tolerance);
    EXPECT_NEAR(framing->camera[1], row.y, tolerance);
    EXPECT_NEAR(framing->camera[2], distance, tolerance);
    EXPECT_EQ(framing->prewarm, 1) << "it is all there in the first second";
}

INSTANTIATE_TEST_SUITE_P(Look, Framings, testing::ValuesIn(kFramings));

TEST(Framing, WaitsForTheSmokeToGather) {
    const auto scene = stage::read_scene(
        "[[container]]\nname = \"smoke\"\nparameters = { birth_rate = 20, life_time = 4, alpha_curve = \"0 1 1 1\" }",
        "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    const auto framing = measure_framing(*scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(framing) << framing.error().message;
    EXPECT_NEAR(framing->prewarm, 4, 1);
}

TEST(Framing, OfNothingIsAnError) {
    const auto scene = stage::read_scene("[[container]]\nname = \"nothing\"\n", "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    EXPECT_FALSE(measure_framing(*scene, TOVU_SMOKE_PLUGIN));
}

}  // namespace
}  // namespace tovu
