// Samples of the smoke's curves, requested as its notes describe.
#include "apps/studio/curve_samples.h"

#include <gtest/gtest.h>

#include "stage/scenefile/scene_build.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {
namespace {

struct SampleCase {
    const char* name;
    const char* text;     // of the curve
    double at_half_life;  // the sampled value at half of the life
};
void PrintTo(const SampleCase& row, std::ostream* stream) {
    *stream << row.name;
}

const SampleCase kSamples[] = {
    {"three points on a line", "0 0.2 0.5 0.5 1 0.8", 0.5},
    {"two points bend", "0 1 1 0", 0.37},
    {"a peak", "0 0 0.5 1 1 0", 1.0},
};

class Samples : public testing::TestWithParam<SampleCase> {};

TEST_P(Samples, AreThoseOfThePlugin) {
    const auto scene = stage::read_scene(
        std::string("[[container]]\nname = \"a\"\nparameters = { alpha_curve = \"") + GetParam().text + "\" }\n",
        "a.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    const auto samples = curve_samples(*built->stage, built->container_handles[0], built->notes.at(built->plugins[0]));
    ASSERT_EQ(1u, samples.size());
    const std::vector<double>& curve = samples.at("alpha_curve");
    ASSERT_EQ(208u, curve.size()) << "104 points";
    EXPECT_NEAR(0.5, curve[102], 0.005) << "position";
    EXPECT_NEAR(GetParam().at_half_life, curve[103], 0.01);
}

INSTANTIATE_TEST_SUITE_P(Curves, Samples, testing::ValuesIn(kSamples));

}  // namespace
}  // namespace tovu
