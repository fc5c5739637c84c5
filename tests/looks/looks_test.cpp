// The built-in images.
#include <gtest/gtest.h>

#include "stage/scenefile/built_in_images.h"
#include "stage/scenefile/scene_build.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {
namespace {

TEST(BuiltInImages, EachCanBeShownByItsName) {
    const auto& images = stage::built_in_images();
    ASSERT_TRUE(images) << images.error().message;
    EXPECT_LT(20u, images->size());
    std::string text;
    for (const auto& [name, image] : *images)
        text += "[[container]]\nname = '" + name + "'\ngeometry = { kind = 'plate', image = '" + name +
                "', width = 1, height = 1 }\n";
    const auto scene = stage::read_scene(text, "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    const auto built = stage::build_scene(*scene, "");
    ASSERT_TRUE(built) << built.error().message;
    for (const auto& [name, image] : *images)
        EXPECT_NE(stage::kNoObject, stage::find_image_by_name(*built->stage, name)) << name;
}

TEST(BuiltInImages, ASceneSetsHowASequenceIsPlayed) {
    const auto scene = stage::read_scene(
        "images = { mine = { file = 'rise', frame_rate = 2 }, wisp_a = 'glow' }\n"
        "container = [{ name = 'a', texture = 'wisp_a' }, { name = 'b', texture = 'wisp_b' }]",
        "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    EXPECT_EQ(32u, scene->images.at("mine").files.size());
    EXPECT_EQ(2.0, scene->images.at("mine").frame_rate);
    const auto built = stage::build_scene(*scene, "");
    ASSERT_TRUE(built) << built.error().message;
    const auto& shown = built->description.images;
    EXPECT_EQ(1u, shown.at("wisp_a").files.size()) << "the scene's own image of that name";
    EXPECT_EQ(12.0, shown.at("wisp_b").frame_rate) << "its own rate";
}

}  // namespace
}  // namespace tovu
