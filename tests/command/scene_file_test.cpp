// Scene files: their values after reading, and the message about each mistake.

#include "../stage/temporary_folder.h"
#include "annotated_scene.h"
#include "stage/lint/lint.h"
#include "stage/names.h"
#include "stage/scenefile/parameter_override.h"
#include "stage/scenefile/parameter_track.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"

namespace {

using stage::read_scene;
using stage::SceneDescription;
using testing::ElementsAre;
using testing::HasSubstr;

const std::filesystem::path kFile = std::filesystem::path(TOVU_SOURCE_DIR) / "scenes" / "test.toml";

SceneDescription scene_of(const std::string& text) {
    const auto scene = read_scene(text, kFile);
    EXPECT_TRUE(scene) << scene.error().message << "\nin\n" << text;
    return scene ? *scene : SceneDescription{};
}

std::string error_of(const std::string& text) {
    const auto scene = read_scene(text, kFile);
    EXPECT_FALSE(scene) << text;
    return scene ? "" : scene.error().message;
}

// Scene, place and message of mistakes that end the reading of the file.
const std::tuple<const char*, const char*, const char*> kSingleMistakes[] = {
    {"size = [1280,", ":1:14: ", "this is not TOML"},
    {"seed = 1 # \xe4", ":1:11: ", "this is not text in UTF-8: save the file in that encoding"},
    {"seed = 1", ":1:1: ", "a scene needs at least one [[container]]"},
    {"size = 5", ":1:8: ", "size must be [width, height] in pixels, not the number 5"},
    {"bits = 8\nshoulder = 0.5", ":2:12: ", "shoulder needs bits = 16"},
    {"background = '#12345g'", ":1:14: ", "background must be"},
};

TEST(SceneFile, AMistakeNamesThePlaceAndWhatWouldBeRight) {
    for (const auto& [text, place, message] : kSingleMistakes)
        EXPECT_THAT(error_of(text), testing::AllOf(HasSubstr(kFile.string() + place), HasSubstr(message)));
}

constexpr const char* kMistakes = R"(
siez = [1, 1]             #! 1: unknown key 'siez' in the scene: did you mean 'size'?
size = [0, 720]           #! 9: width must be a whole number from 1 to 16384, not the number 0
frame_rate = "fast"       #! 14: frame_rate must be a number from 1 to 1000, not the text "fast"
bits = 12                 #! 8: bits must be 8 or 16, not the number 12
shoulder = 1              #! 12: shoulder must be a number from 0 to 0.99, not the number 1
background = [0, 0, 255]  #! 14: background must be [red, green, blue] with three numbers from 0 to 1
camera.position = [1, 2, 3]
camera.look_at = [1, 2, 3]  #! 18: look_at must be another point than the camera's position
camera.tilt = 3             #! 15: tilt and look_at both turn the camera
images.mask = "assets/logo.png"
images.none = { play = "loop" }                             #! 15: the image 'none' needs a file
images.still = { file = "assets/logo.png", play = "loop" }  #! 51: play is for a sequence
images.built_in = "glwo"  #! 19: built_in: there is no built-in image 'glwo', and a file's name has an ending: did you mean 'glow'?
images.gone = "assets/no.png"       #! 15: gone: there is no file
images.numbers = "assets/no%d.png"  #! 18: numbers: no file matches 'no%d.png' in the folder
images.folders = "no%d/logo.png"    #! 18: folders: the number belongs into the file's name
container = [
    { opacity = 1 },  #! 5: a container needs a name
    { name = "a", blend = "add" },  #! 27: blend must be one of "alpha", "additive"
    { name = "a" },  #! 14: there is a container 'a' already
    { name = "a1", texture = [] },  #! 30: texture must be a name or an array of names, not an empty one
    { name = "a2", texture = ["puff", 1] },  #! 39: texture must be a text in quotes, not the number 1
    { name = "b", position = [1] },  #! 30: position must be [x, y, z] with three numbers
    { name = "c", container = [{ name = "d", parent = "a" }] },  #! 55: a nested container has its parent already
    { name = "fire", parent = "fier" },  #! 31: unknown container 'fier': did you mean 'fire'?
    { name = "hen", parent = "egg" },  #! 30: 'egg' cannot be the parent of 'hen'
    { name = "egg", parent = "hen" },  #! 30: 'hen' cannot be the parent of 'egg'
    { name = "smoke", parameters = { gravity = [1] } },  #! 48: gravity must be a number, true, false or a text
    { name = "both", plugin = "smoke", geometry = { kind = "text", text = "b" } },  #! 51: container 'both' carries
    { name = "lit", light = { position = [0, 0], size = [9, 0] } },  #! 29: a light needs image  #! 57: size must be
    { name = "text", geometry = { kind = "text", text = "b" } },
    { name = "switched" },
    { name = "plain" },
]
at = [
    { time = 1, container = "smoke" },  #! 5: [[at]] does nothing
    { time = 1, container = "smoke", burst = 0 },  #! 46: burst must be a whole number from 1
    { time = 1, container = "plain", press = "reset" },  #! 29: container 'plain' carries no plug-in
    { time = 1, container = "smoke", geometry = { kind = "text", text = "b" } },  #! 49: container 'smoke' carries
    { time = 1, container = "switched", geometry = { kind = "text", text = "b" } },  #! 52: container 'switched' has
    { time = 1, container = "smoke", parameters = { gravity = 2 } },  #! 63: container 'smoke' has a track for 'gravity'
    { time = 1, image = "maks", file = "assets/logo.png" },  #! 25: unknown image 'maks': did you mean 'mask'?
    { time = 1, image = "mask", container = "a" },  #! 5: [[at]] about an image needs file  #! 45: container is for
]
track = [
    { container = "plain", property = "scale" },  #! 5: [[track]] needs keys
    { container = "plain", property = "opacity", keys = [{ time = 0, value = 2 }] },  #! 78: value must be a number from 0
    { container = "plain", keys = [{ time = 0, value = [1, 1, 1] }] },  #! 5: [[track]] needs property or parameter
    { container = "plain", parameter = "sort", keys = [{ time = 0, value = [] }] },  #! 19: container 'plain' carries no … parameters  #! 76: value must
    { container = "smoke", parameter = "sort", property = "scale", keys = [{ time = 0, value = 2 }] },  #! 59: property and
    { container = "smoke", parameter = "gravity", keys = [{ time = 0, value = 2 }] },
    { container = "smoke", parameter = "sort", keys = [{ time = 0, value = 2 }] },  #! 5: container 'smoke' has a track for this parameter
    { container = "plain", property = "scale", keys = [] },  #! 55: keys must  #! 5: container 'plain' has a track for
    { container = "text", property = "geometry", keys = [  #! 5: container 'text' has a geometry already
        { time = 1, value = { kind = "text", text = "b" } },
    ] },
    { container = "switched", property = "geometry", keys = [
        { time = 0, value = 1 },  #! 29: value must be a table
        { time = 1, value = { width = 1 } },  #! 29: a geometry needs a kind
        { time = 2, value = { kind = "rectangle", width = 1 } },  #! 29: a geometry of kind "rectangle"
        { time = 3, value = { kind = "polygon", points = [[0, 0], [1, 0]] } },  #! 58: points must be three or more
        { time = 3, value = { kind = "text", text = "b", width = 2 } },  #! 18: keys must be  #! 58: width is not
        { time = 4 },  #! 9: a key needs value
    ] },
]
)";

TEST(SceneFile, AllMistakesOfAFileAreReportedAtOnce) {
    EXPECT_THAT(messages_about(kFile.string(), error_of(kMistakes)),
                testing::UnorderedElementsAreArray(annotated_messages(kMistakes, kFile.string())));
}

TEST(SceneFile, ParentsComeBeforeChildrenAndEntriesInOrderOfTime) {
    const SceneDescription scene = scene_of(R"(container = [
    { name = "child", parent = "group", parameters = { zeta = 1, alpha = 2.5 } },
    { name = "group", container = [{ name = "nested" }] },
]
at = [{ time = 2, container = "child", press = "reset" }, { time = 1, container = "child", parameters = { beta = 1 } }]
)");
    ASSERT_EQ(3u, scene.containers.size());
    const auto& [group, nested, child] = std::tie(scene.containers[0], scene.containers[1], scene.containers[2]);
    EXPECT_THAT((std::array{group.name, nested.name, child.name}), ElementsAre("group", "nested", "child"));
    EXPECT_THAT((std::array{group.parent, nested.parent, child.parent}), ElementsAre(-1, 0, 0));
    EXPECT_TRUE(child.has_plugin && !group.has_plugin);
    ASSERT_EQ(2u, child.parameters.size());
    EXPECT_EQ("zeta", child.parameters[0].name) << "in the order written";
    EXPECT_EQ(stage::ParameterValue(1), child.parameters[0].value);
    EXPECT_EQ(stage::ParameterValue(2.5), child.parameters[1].value);
    EXPECT_EQ(kFile.string() + ":2:63", child.parameters[0].place);
    ASSERT_EQ(2u, scene.timeline.size());
    EXPECT_EQ("beta", scene.timeline[0].parameters.at(0).name);
    EXPECT_EQ("reset", scene.timeline[1].press);
}

TEST(SceneFile, ImagesAreFilesOrSequencesBesideTheScene) {
    const TemporaryFolder outer;
    const std::filesystem::path folder = outer / "100%d sequences";
    std::filesystem::create_directory(folder);
    for (const char* name : {"../dot.png", "a9.png", "a10.png", "a11.png", "a011.png", "ab.png", "b9.png"})
        write_bytes(folder / name, "x");
    const std::string text =
        "container = [{name = 'a'}]\nframe_rate = 30\nimages = { a = 'a%d.png', b = '../dot.png' }";
    const auto scene = read_scene(text, folder / "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    const stage::ImageDescription& sequence = scene->images.at("a");
    EXPECT_THAT(sequence.files, ElementsAre(folder / "a9.png", folder / "a10.png", folder / "a11.png"));
    EXPECT_EQ(30.0, sequence.frame_rate) << "the scene's";
    EXPECT_THAT(scene->images.at("b").files, ElementsAre(outer / "dot.png"));
    std::filesystem::remove(folder / "a10.png");
    EXPECT_THAT(
        read_scene(text, folder / "scene.toml").error().message,
        testing::ContainsRegex(":3:16: a: .*a10.png' is missing; there must be a file for each number from 9 to 11"));
}

TEST(SceneFile, OverridesAddASetting) {
    const std::pair<const char*, stage::ParameterValue> cases[] = {
        {"fire.gravity=-2.5", -2.5},
        {"fire.sort=true", true},
        {"fire.color=0 1 1 1", "0 1 1 1"},
        {"fire.color=\"0 1 1 1\"", "0 1 1 1"},
    };
    SceneDescription scene = scene_of("container = [{ name = 'fire', plugin = 'smoke' }]");
    for (const auto& [assignment, value] : cases) {
        ASSERT_TRUE(stage::override_parameter(scene, assignment)) << assignment;
        EXPECT_EQ(value, scene.containers[0].parameters.back().value) << assignment;
        EXPECT_EQ(std::string("--set ") + assignment, scene.containers[0].parameters.back().place);
    }
    scene.tracks = {{0, stage::TrackProperty::kParameter, {}, "sort"}};
    for (const char* wrong : {"fire.sort=true", "fire", "fire.=1", ".gravity=1", "fire.gravity", "fire.gravity=[1]"})
        EXPECT_FALSE(stage::override_parameter(scene, wrong)) << wrong;
}

TEST(Timeline, FramesOfATime) {
    const SceneDescription scene = scene_of("length = 2\nprewarm = 0.5\ncontainer = [{ name = 'a' }]");
    EXPECT_EQ(100, stage::frame_count(scene));
    EXPECT_EQ(25, stage::prewarm_frames(scene));
    EXPECT_EQ(14, stage::frame_at(scene, 0.28)) << "in double, 0.28 * 50 is not exactly 14";
    EXPECT_EQ(14, stage::first_frame_from(scene, 0.28));
    EXPECT_EQ(14, stage::frame_at(scene, 0.299));
    EXPECT_EQ(15, stage::first_frame_from(scene, 0.281));
}

TEST(Timeline, TracksHoldAndEase) {
    const stage::Track track{0,
                             stage::TrackProperty::kPosition,
                             {{1.0, {0, 10, 0}, {}, stage::Ease::kLinear},
                              {2.0, {4, 10, 0}, {}, stage::Ease::kLinear},
                              {4.0, {4, 10, 8}, {}, stage::Ease::kSmooth},
                              {10.0, {0, 0, 0}, {}, stage::Ease::kStep}}};
    EXPECT_THAT(stage::track_value(track, 0.0), ElementsAre(0, 10, 0));
    EXPECT_THAT(stage::track_value(track, 1.25), ElementsAre(1, 10, 0));
    EXPECT_THAT(stage::track_value(track, 2.5), ElementsAre(4, 10, 1.25)) << "u = 1/4: 3/16 - 2/64 = 5/32 of 8";
    EXPECT_THAT(stage::track_value(track, 9.99), ElementsAre(4, 10, 8));
    EXPECT_THAT(stage::track_value(track, 10.0), ElementsAre(0, 0, 0));
}

// Keys at 0, 1 and 2 seconds. The value is interpolated at 0.5 seconds and constant at 1.5 seconds.
TEST(Timeline, TracksOfParametersBlendNumbersAndCurves) {
    using stage::ParameterKind;
    using Values = std::array<stage::ParameterValue, 3>;
    const std::tuple<ParameterKind, Values, stage::ParameterValue> cases[] = {
        {ParameterKind::kFloat, {1, 2, 4}, 1.5},
        {ParameterKind::kFloat, {-1.0, 2, 4}, 0.5},
        {ParameterKind::kInt, {10, 13, 20}, 12},  // 11.5, rounded
        {ParameterKind::kString, {"0 0  0.5 1 1 0", "0 0.5 0.6 1 1 -0.5", "0 1 1 1"}, "0 0.25 0.55 1 1 -0.25"},
    };
    for (const auto& [kind, values, half] : cases) {
        stage::Track track{0, stage::TrackProperty::kParameter, {}, "p"};
        for (size_t i = 0; i < 3; ++i)
            track.keys.push_back({static_cast<double>(i),
                                  {},
                                  {},
                                  i == 2 ? stage::Ease::kStep : stage::Ease::kLinear,
                                  {"p", values[i], ""}});
        stage::ParameterInfo parameter;
        parameter.kind = kind;
        const std::pair<double, stage::ParameterValue> moments[] = {
            {-1, values[0]}, {0.5, half}, {1.5, values[1]}, {2, values[2]}};
        for (const auto& [seconds, value] : moments)
            EXPECT_EQ(value, stage::parameter_value(track, parameter, seconds)) << track.keys.size() << seconds;
    }
}

TEST(Names, NearestIsOfferedOnlyWhenNear) {
    const std::vector<std::string> known = {"birth_rate", "gravity", "sort"};
    EXPECT_EQ("did you mean 'gravity'?", stage::name_hint("gravtiy", known));
    EXPECT_EQ("known are: birth_rate, gravity, sort", stage::name_hint("wind", known));
    EXPECT_EQ("there are none here", stage::name_hint("wind", {}));
}

TEST(SceneDocumentation, HasEveryKeyAndExamplesWithoutSurprises) {
    std::string text = file_bytes(TOVU_SOURCE_DIR "/docs/scenes.md");
    const std::string begin = "```toml\n";
    for (const std::string& key : stage::scene_keys()) EXPECT_THAT(text, HasSubstr("`" + key + "`"));
    for (const char* page : {"/docs/images.md", "/docs/looks.md"})
        text += file_bytes(std::string(TOVU_SOURCE_DIR) + page);
    int examples = 0;
    for (size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at), ++examples) {
        at += begin.size();
        const auto scene =
            stage::read_scene(text.substr(at, text.find("```", at) - at), TOVU_SOURCE_DIR "/scenes/example.toml");
        ASSERT_TRUE(scene) << scene.error().message;
        const auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
        ASSERT_TRUE(built) << built.error().message;
        EXPECT_THAT(stage::lint_scene(*built), testing::IsEmpty());
    }
    EXPECT_GE(examples, 6);
}

}  // namespace
