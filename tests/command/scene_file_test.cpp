// Scene files: what is read, and what each mistake is answered with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "../stage/temporary_folder.h"
#include "stage/names.h"
#include "stage/scenefile/parameter_override.h"
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

std::vector<std::string> file_names(const SceneDescription& scene, const char* image) {
    std::vector<std::string> names;
    for (const std::filesystem::path& file : scene.images.at(image).files) names.push_back(file.string());
    return names;
}

struct MistakeCase {
    const char* name;
    const char* text;
    const char* place;    // line:column
    const char* message;  // part of it
};

// Every scene has its container first, in line 1, where the mistake is not the container itself.
const MistakeCase kMistakes[] = {
    {"NotToml", "size = [1280,", "1:14", "this is not TOML"},
    {"NotUtf8", "seed = 1 # \xe4", "1:11", "this is not text in UTF-8: save the file in that encoding"},
    {"UnknownKey", "container = [{name='a'}]\nsiez = [1, 1]", "2:1",
     "unknown key 'siez' in the scene: did you mean 'size'?"},
    {"SizeIsANumber", "size = 5", "1:8", "size must be [width, height] in pixels, not the number 5"},
    {"WidthOutOfRange", "size = [0, 720]", "1:9", "width must be a whole number from 1 to 16384, not the number 0"},
    {"RateIsText", "frame_rate = \"fast\"", "1:14",
     "frame_rate must be a number from 1 to 1000, not the text \"fast\""},
    {"SeedIsNegative", "seed = -1", "1:8", "seed must be a whole number from 0 to 4294967295, not the number -1"},
    {"BitsUnknown", "bits = 12", "1:8", "bits must be 8 or 16, not the number 12"},
    {"BackgroundDigits", "background = \"#12345g\"", "1:14", "background must be"},
    {"BackgroundAboveOne", "background = [0, 0, 255]", "1:14",
     "background must be [red, green, blue] with three numbers from 0 to 1"},
    {"CameraIsText", "camera = \"left\"", "1:10", "camera must be a table"},
    {"CameraTwoNumbers", "[camera]\nposition = [1, 2]", "2:12", "position must be [x, y, z] with three numbers"},
    {"CameraTurnedTwice", "[camera]\nlook_at = [0, 0, 0]\ntilt = 3", "3:8", "tilt and look_at both turn the camera"},
    {"CameraLooksAtItself", "[camera]\nposition = [1, 2, 3]\nlook_at = [1, 2, 3]", "3:11", "another point"},
    {"ImageMissing", "[images]\npuff = \"no/such.png\"", "2:8",
     "no/such.png'; relative paths start from the scene file's"},
    {"ImageWithoutFile", "[images]\npuff = { play = 'loop' }", "2:8", "the image 'puff' needs a file"},
    {"ImageKey", "[images]\npuff = { fiel = 'a.png' }", "2:10", "in the image 'puff': did you mean 'file'?"},
    {"ImagePlay", "[images]\npuff = { file = 'assets/logo_wipe%02d.png', play = 'twice' }", "2:52",
     "play must be one of \"loop\", \"hold\", \"once\""},
    {"ImagePlayOfOneFile", "[images]\npuff = { file = 'assets/logo.png', play = 'loop' }", "2:43",
     "play is for a sequence, whose file has a number in its name"},
    {"SequenceWithoutFiles", "[images]\npuff = 'assets/no%d.png'", "2:8",
     "there is no file that 'no%d.png' stands for in the folder"},
    {"SequenceMalformed", "[images]\npuff = 'assets/logo%s.png'", "2:8", "holds one number such as %04d"},
    {"SequenceOfFolders", "[images]\npuff = 'assets%d/logo.png'", "2:8", "the number belongs into the file's name"},
    {"NoContainer", "seed = 1", "1:1", "a scene needs at least one [[container]]"},
    {"ContainerWithoutName", "[[container]]\nopacity = 1", "1:1", "a container needs a name"},
    {"NameTwice", "[[container]]\nname = \"a\"\n[[container]]\nname = \"a\"", "4:8",
     "there is a container 'a' already"},
    {"UnknownParent", "[[container]]\nname = \"fire\"\nparent = \"fier\"", "3:10",
     "unknown container 'fier': did you mean 'fire'?"},
    {"ParentsInACircle", "container = [{name='a', parent='b'},\n{name='b', parent='a'}]", "2:19",
     "the parents form a circle"},
    {"NestedWithParent", "[[container]]\nname='a'\n[[container.container]]\nname='b'\nparent='a'", "5:8",
     "leave 'parent' out"},
    {"Blend", "container = [{name='a', blend='add'}]", "1:31", "blend must be one of \"alpha\", \"additive\""},
    {"ParameterIsArray", "container = [{name='a', parameters={gravity=[1]}}]", "1:45",
     "gravity must be a number, true, false or a text"},
    {"PluginAndShape", "container = [{name='a', plugin='smoke', geometry={kind='rectangle', width=1, height=1}}]",
     "1:50", "carries a plug-in already"},
    {"GeometryWithoutKind", "container = [{name='a', geometry={width=1}}]", "1:34",
     "a geometry needs a kind: rectangle, ellipse"},
    {"GeometryLacksKey", "container = [{name='a', geometry={kind='rectangle', width=1}}]", "1:34",
     "a geometry of kind \"rectangle\" needs height"},
    {"GeometryKeyOfOtherKind",
     "container = [{name='a', geometry={kind='polygon', points=[[0,0],[1,0],[0,1]], size=2}}]", "1:79",
     "size is not for a geometry of kind \"polygon\", which takes: points"},
    {"FillOf255", "container = [{name='a', geometry={kind='ellipse', width=1, height=1, fill=[255, 0, 0]}}]", "1:75",
     "fill must be [red, green, blue] with three numbers from 0 to 1"},
    {"TooFewPoints", "container = [{name='a', geometry={kind='polygon', points=[[0,0],[1,0]]}}]", "1:58",
     "points must be three or more"},
    {"AtUnknownContainer",
     "container = [{name='fire', plugin='smoke'}]\n[[at]]\ntime = 1\ncontainer = 'fires'\npress = 'reset'", "4:13",
     "unknown container 'fires': did you mean 'fire'?"},
    {"AtWithoutPlugin", "container = [{name='a'}]\n[[at]]\ntime = 1\ncontainer = 'a'\npress = 'reset'", "4:13",
     "carries no plug-in"},
    {"AtDoesNothing", "container = [{name='a', plugin='smoke'}]\n[[at]]\ntime = 1\ncontainer = 'a'", "2:1",
     "[[at]] does nothing"},
    {"AtImageUnknown",
     "images = { mask = 'assets/logo.png' }\n[[at]]\ntime = 1\nimage = 'maks'\nfile = 'assets/pan.obj'", "4:9",
     "unknown image 'maks': did you mean 'mask'?"},
    {"AtImageWithoutFile", "images = { mask = 'assets/logo.png' }\n[[at]]\ntime = 1\nimage = 'mask'", "2:1",
     "[[at]] about an image needs file"},
    {"AtImageAndContainer",
     "container = [{name='a'}]\nimages = { mask = 'assets/logo.png' }\n[[at]]\ntime = 1\nimage = 'mask'\n"
     "file = 'assets/logo.png'\ncontainer = 'a'",
     "7:13", "container is for a container: give it an [[at]] of its own"},
    {"AtGeometryOfAPlugin",
     "container = [{name='a', plugin='smoke'}]\n[[at]]\ntime = 1\ncontainer = 'a'\ngeometry = {kind='text', text='b'}",
     "5:12", "carries a plug-in: give the shape a container of its own"},
    {"TrackWithoutKeys", "container = [{name='a'}]\n[[track]]\ncontainer = 'a'\nproperty = 'scale'", "2:1",
     "[[track]] needs keys"},
    {"TrackKeysOutOfOrder",
     "container = [{name='a'}]\n[[track]]\ncontainer = 'a'\nproperty = 'scale'\nkeys = [{time=1, "
     "value=[1,1,1]},\n{time=1, value=[2,2,2]}]",
     "6:7", "keys must be in order of time"},
    {"TrackKeyWithoutValue",
     "container = [{name='a'}]\n[[track]]\ncontainer = 'a'\nproperty = 'scale'\nkeys = [{time=1}]", "5:9",
     "a key needs value"},
    {"TrackOfShapesWithNumbers",
     "container = [{name='a'}]\n[[track]]\ncontainer = 'a'\nproperty = 'geometry'\nkeys = [{time=0, value=[1,1,1]}]",
     "5:24", "value must be a table"},
    {"TrackOfShapesBesideAGeometry",
     "container = [{name='a', geometry={kind='text', text='b'}}]\n[[track]]\ncontainer = 'a'\nproperty = 'geometry'\n"
     "keys = [{time=0, value={kind='text', text='c'}}]",
     "2:1", "has a geometry already: make it the first key of this track"},
    {"TrackOfShapesBesideASwitch",
     "container = [{name='a'}]\nat = [{time=1, container='a', geometry={kind='text', text='b'}}]\n[[track]]\n"
     "container = 'a'\nproperty = 'geometry'\nkeys = [{time=0, value={kind='text', text='c'}}]",
     "2:40", "has a track for its geometry: make this a key of it, with ease = \"step\""},
    {"TrackTwice",
     "container = [{name='a'}]\ntrack = [{container='a', property='scale', keys=[{time=0, "
     "value=[1,1,1]}]},\n{container='a', property='scale', keys=[{time=0, value=[1,1,1]}]}]",
     "3:1", "has a track for this property already"},
};

class Mistakes : public testing::TestWithParam<MistakeCase> {};

TEST_P(Mistakes, NameThePlaceAndWhatWouldBeRight) {
    const auto scene = read_scene(GetParam().text, kFile);
    ASSERT_FALSE(scene);
    EXPECT_THAT(scene.error().message, HasSubstr(kFile.string() + ":" + GetParam().place + ": "));
    EXPECT_THAT(scene.error().message, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(SceneFile, Mistakes, testing::ValuesIn(kMistakes),
                         [](const auto& one) { return std::string(one.param.name); });

TEST(SceneFile, ReportsAllMistakesOfAFileAtOnce) {
    const auto scene = read_scene("seed = -1\nlenght = 3\n[[container]]\nname = 5", kFile);
    ASSERT_FALSE(scene);
    EXPECT_THAT(
        scene.error().message,
        testing::MatchesRegex(".*:2:1: unknown key 'lenght'[^\n]*\n[^\n]*:1:8: seed[^\n]*\n[^\n]*:4:8: name[^\n]*"));
}

TEST(SceneFile, ParentsComeBeforeTheirChildren) {
    const SceneDescription scene = scene_of(R"(
[[container]]
name = "child"
parent = "group"
parameters = { zeta = 1, alpha = 2.5 }
[[container]]
name = "group"
[[container.container]]
name = "nested"
)");
    ASSERT_EQ(3u, scene.containers.size());
    const auto& [group, nested, child] = std::tie(scene.containers[0], scene.containers[1], scene.containers[2]);
    EXPECT_EQ("group", group.name);
    EXPECT_FALSE(group.has_plugin);
    EXPECT_EQ(0, nested.parent);
    EXPECT_EQ(0, child.parent);
    EXPECT_TRUE(child.has_plugin);
    ASSERT_EQ(2u, child.parameters.size());
    EXPECT_EQ("zeta", child.parameters[0].name) << "in the order written";
    EXPECT_EQ(stage::ParameterValue(1), child.parameters[0].value);
    EXPECT_EQ(stage::ParameterValue(2.5), child.parameters[1].value);
    EXPECT_EQ(kFile.string() + ":5:23", child.parameters[0].place);
}

TEST(SceneFile, RelativePathsStartFromTheScenesFolder) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "sub");
    write_bytes(folder / "dot.png", "x");
    write_bytes(folder / "sub/scene.toml", "container = [{name = 'a'}]\nimages = { dot = '../dot.png' }\n");
    const auto scene = stage::load_scene_file(folder / "sub/scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    EXPECT_THAT(file_names(*scene, "dot"), ElementsAre((folder / "dot.png").string()));
    EXPECT_THAT(stage::load_scene_file(folder / "such.toml").error().message,
                HasSubstr("/such.toml: cannot be read: No such file"));
}

TEST(SceneFile, SequencesAreTheFilesThatThereAre) {
    const TemporaryFolder outer;
    const std::filesystem::path folder = outer / "100%d sequences";
    std::filesystem::create_directory(folder);
    for (const char* name : {"a9.png", "a10.png", "a11.png", "a011.png", "ab.png", "b9.png"})
        write_bytes(folder / name, "x");
    const std::string text = "container = [{name = 'a'}]\nframe_rate = 30\nimages = { a = 'a%d.png' }\n";
    const auto scene = read_scene(text, folder / "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    EXPECT_THAT(file_names(*scene, "a"), ElementsAre((folder / "a9.png").string(), (folder / "a10.png").string(),
                                                     (folder / "a11.png").string()));
    EXPECT_EQ(30.0, scene->images.at("a").frame_rate) << "the scene's";
    std::filesystem::remove(folder / "a10.png");
    EXPECT_THAT(
        read_scene(text, folder / "scene.toml").error().message,
        testing::AllOf(HasSubstr(":3:16: a: "), HasSubstr("a10.png' is missing: there are files from number 9 to 11")));
}

TEST(SceneFile, TimelineIsInOrderOfTime) {
    const SceneDescription scene = scene_of(R"(
container = [{ name = "a", plugin = "smoke" }]
at = [{ time = 2, container = "a", press = "reset" }, { time = 1, container = "a", parameters = { gravity = 1 } }]
)");
    ASSERT_EQ(2u, scene.timeline.size());
    EXPECT_EQ("gravity", scene.timeline[0].parameters.at(0).name);
    EXPECT_EQ("reset", scene.timeline[1].press);
}

TEST(SceneFile, OverridesAddASetting) {
    const std::pair<const char*, stage::ParameterValue> cases[] = {
        {"fire.gravity=-2.5", -2.5},
        {"fire.gravity=3", 3},
        {"fire.sort=true", true},
        {"fire.color=0 1 1 1", "0 1 1 1"},
        {"fire.color=\"0 1 1 1\"", "0 1 1 1"},
        {"fire.spawn_type=Sphere", "Sphere"},
    };
    SceneDescription scene = scene_of("container = [{ name = 'fire', plugin = 'smoke' }]");
    for (const auto& [assignment, value] : cases) {
        ASSERT_TRUE(stage::override_parameter(scene, assignment)) << assignment;
        EXPECT_EQ(value, scene.containers[0].parameters.back().value) << assignment;
        EXPECT_EQ(std::string("--set ") + assignment, scene.containers[0].parameters.back().place);
    }
    for (const char* wrong : {"fire", "fire.=1", ".gravity=1", "fire.gravity", "fier.gravity=1", "fire.gravity=[1]"})
        EXPECT_FALSE(stage::override_parameter(scene, wrong)) << wrong;
}

TEST(Timeline, FramesOfATime) {
    SceneDescription scene;
    scene.frame_rate = 50.0;
    scene.length = 2.0;
    scene.prewarm = 0.5;
    EXPECT_EQ(100, stage::frame_count(scene));
    EXPECT_EQ(25, stage::prewarm_frames(scene));
    EXPECT_EQ(14, stage::frame_at(scene, 0.28)) << "0.28 × 50 is a little above or below 14 as numbers go";
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

TEST(Names, NearestIsOfferedOnlyWhenNear) {
    const std::vector<std::string> known = {"birth_rate", "gravity", "sort"};
    EXPECT_EQ("did you mean 'gravity'?", stage::name_hint("gravtiy", known));
    EXPECT_EQ("known are: birth_rate, gravity, sort", stage::name_hint("wind", known));
    EXPECT_EQ("there are none here", stage::name_hint("wind", {}));
}

// Documentation: docs/scenes.md has every key that the reader knows, and its examples are scenes.
TEST(SceneDocumentation, HasEveryKeyAndExamplesThatAreRead) {
    const std::string text = file_bytes(TOVU_SOURCE_DIR "/docs/scenes.md");
    for (const std::string& key : stage::scene_keys()) EXPECT_THAT(text, HasSubstr("`" + key + "`"));
    const std::regex block("```toml\n([^`]*)```");
    int examples = 0;
    for (std::sregex_iterator match(text.begin(), text.end(), block), end; match != end; ++match, ++examples)
        scene_of((*match)[1].str());
    EXPECT_GE(examples, 6);
}

}  // namespace
