// Looks: their layers in a scene, changes by the scene, and the smoke of the shipped looks.
#include <algorithm>

#include "../stage/temporary_folder.h"
#include "annotated_scene.h"
#include "scene_pictures.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/parameter_override.h"
#include "stage/scenefile/scene_reader.h"

namespace {

using stage::ContainerDescription;
using stage::read_scene;
using stage::SceneDescription;
using testing::ElementsAre;
using testing::HasSubstr;

// A temporary folder for a scene, with looks/two.toml.
class Looks : public testing::Test {
  protected:
    Looks() {
        std::filesystem::create_directory(folder / "looks");
        write(R"(purpose = "A test"
rate = 29.97
images = { mask = "../picture.png" }
[[layer]]
name = "word"
geometry = { kind = "text", text = "A" }
[[layer]]
name = "smoke"
position = [1, 2, 3]
parameters = { spawn_type = "Container", spawn_cont_name = "word", spawn_image = "mask", gravity = 1, birth_rate = 9 }
[[layer]]
name = "fire"
texture = "mask"
parameters = { wind_image = "other" }
)");
        write_bytes(folder / "picture.png", "x");
    }
    void write(const std::string& look) { write_bytes(folder / "looks/two.toml", look); }
    stage::Result<SceneDescription> read(const std::string& text) { return read_scene(text, folder / "scene.toml"); }

    TemporaryFolder folder;
};

std::vector<std::string> values_of(const ContainerDescription& container, const std::string& name) {
    std::vector<std::string> values;
    for (const stage::ParameterSetting& setting : container.parameters) {
        if (setting.name != name) continue;
        if (const auto* text = std::get_if<std::string>(&setting.value)) values.push_back(*text);
        if (const auto* whole = std::get_if<int>(&setting.value)) values.push_back(std::to_string(*whole));
    }
    return values;
}

TEST_F(Looks, LayersAreChildrenWithChangesOfTheScene) {
    auto scene = read(R"(
[[container]]
name = "first"
look = "two"
blend = "additive"
parameters = { gravity = 2 }
layers.smoke = { opacity = 0.5, parameters = { gravity = 3 } }
[[container]]
name = "later"
[[at]]
time = 1
container = "first"
parameters = { gravity = 5 }
[[at]]
time = 2
container = "first.fire"
press = "reset"
[[track]]
container = "first"
parameter = "life_time"
keys = [{ time = 0, value = 1 }]
)");
    ASSERT_TRUE(scene) << scene.error().message;
    ASSERT_TRUE(stage::override_parameter(*scene, "first.gravity=4"));
    ASSERT_TRUE(stage::override_parameter(*scene, "first.fire.birth_rate=7"));
    ASSERT_EQ(5u, scene->containers.size());
    const ContainerDescription &first = scene->containers[0], &word = scene->containers[1],
                               &smoke = scene->containers[2], &fire = scene->containers[3];
    EXPECT_THAT((std::array{word.name, smoke.name, fire.name}), ElementsAre("first.word", "first.smoke", "first.fire"));
    EXPECT_THAT((std::array{word.parent, smoke.parent, fire.parent}), ElementsAre(0, 0, 0));
    EXPECT_THAT((std::array{first.has_plugin, word.has_plugin, smoke.has_plugin}), ElementsAre(false, false, true));
    EXPECT_EQ((stage::Triple{1, 2, 3}), smoke.position);
    EXPECT_EQ(stage::Blend::kAdditive, fire.blend);
    EXPECT_EQ(0.5f, smoke.opacity);
    EXPECT_THAT(values_of(smoke, "gravity"), ElementsAre("1", "2", "3", "4")) << "the last one counts";
    EXPECT_THAT(values_of(fire, "gravity"), ElementsAre("2", "4"));
    EXPECT_THAT(values_of(fire, "birth_rate"), ElementsAre("7"));
    EXPECT_EQ(30000.0 / 1001.0, smoke.parameters.front().frame_rate);
    EXPECT_EQ(0.0, smoke.parameters.back().frame_rate);

    EXPECT_THAT(values_of(smoke, "spawn_cont_name"), ElementsAre("first.word"));
    EXPECT_THAT(values_of(smoke, "spawn_image"), ElementsAre("two.mask"));
    EXPECT_THAT(values_of(fire, "wind_image"), ElementsAre("other")) << "not the look's";
    EXPECT_EQ("two.mask", fire.texture);
    EXPECT_THAT(scene->images.at("two.mask").files, ElementsAre(folder / "picture.png"));

    ASSERT_EQ(3u, scene->timeline.size());
    EXPECT_THAT((std::array{scene->timeline[0].container, scene->timeline[1].container, scene->timeline[2].container}),
                ElementsAre(2, 3, 3));
    ASSERT_EQ(2u, scene->tracks.size());
    EXPECT_THAT((std::array{scene->tracks[0].container, scene->tracks[1].container}), ElementsAre(2, 3));
}

TEST_F(Looks, MistakesNameThePlaceInTheSceneOrInTheLook) {
    const std::string scene = R"(container = [
    { name = "a", look = "tow" },  #! 26: unknown look 'tow': did you mean 'two'?
    { name = "b", look = "./two.toml" },  #! 26: there is no look file … two.toml'
    { name = "c", look = "two", plugin = "smoke" },  #! 42: the layers of a look have plug-ins of their own
    { name = "d", look = "two", layers = { wrod = {} } },  #! 44: unknown layer 'wrod': did you mean 'word'?
    { name = "e", look = "two", layers.word = { look = "two" } },  #! 49: unknown key 'look' in [layers.word]
    { name = "f", layers = {} },  #! 28: layers changes layers of a look
    { name = "g", look = "two", parameters = { gravity = [1] } },  #! 58: gravity must be a number
    { name = "h.fire" },  #! 14: a look has a layer 'h.fire' already
    { name = "h", look = "two" },
]
at = [{ time = 1, container = "h", burst = 7 }]  #! 44: container 'h' has a look: give the burst to one of its layers
)";
    const std::string file = folder / "scene.toml", look_file = folder / "looks/two.toml";
    EXPECT_THAT(messages_about(file, read(scene).error().message),
                testing::UnorderedElementsAreArray(annotated_messages(scene, file)));

    const std::string look =
        R"(porpose = "A test"  #! 1: unknown key 'porpose' in the look  #! 1: a look needs 'purpose'
rate = 0  #! 8: rate must be a number from 1 to 1000
layer = [
    { parent = "b" },  #! 5: a layer needs a name  #! 7: unknown key 'parent' in [[layer]]
    { name = "a", parameters = {}, geometry = { kind = "text", text = "b" } },  #! 47: layer 'a' carries a plug-in
    { name = "a" },  #! 14: there is a layer 'a' already
])";
    write(look);
    EXPECT_THAT(messages_about(look_file, read("container = [{ name = 'a', look = 'two' }]").error().message),
                testing::UnorderedElementsAreArray(annotated_messages(look, look_file)));
}

std::vector<std::string> shipped_names() {
    std::vector<std::string> names;
    for (const std::filesystem::path& file : stage::look_files(stage::shipped_looks_folder()))
        names.push_back(file.stem().string());
    return names;
}

class ShippedLooks : public testing::TestWithParam<std::string> {};

TEST_P(ShippedLooks, ShowSmokeAndKeepToTheContract) {
    const auto scene = read_scene(
        "size = [64, 36]\nframe_rate = 25\nlength = 3\ncontainer = [{ name = 'look', look = '" + GetParam() + "' }]",
        "looks.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    size_t most = 0;
    for (const stage::Picture& picture : draw_frames(*scene, {12, 25, 50, 74}).pictures) {
        size_t smoky = 0;
        for (size_t i = 3; i < picture.bytes.size(); i += 4) smoky += picture.bytes[i] > 8 ? 1 : 0;
        most = std::max(most, smoky);
    }
    EXPECT_GT(most, 64u * 36u / 50u) << "a fiftieth of the picture";

    const auto look = stage::load_look_file(*scene->looks.begin());
    ASSERT_TRUE(look) << look.error().message;
    EXPECT_THAT(file_bytes(TOVU_SOURCE_DIR "/docs/looks.md"),
                HasSubstr("\n| `" + GetParam() + "` | " + look->purpose + " | ![" + GetParam() + "](looks/" +
                          GetParam() + ".jpg) |\n"));
}

INSTANTIATE_TEST_SUITE_P(All, ShippedLooks, testing::ValuesIn(shipped_names()),
                         [](const auto& one) { return one.param; });

}  // namespace
