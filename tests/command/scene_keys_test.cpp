// Every key of a scene file has an effect: changing its value changes the pictures.
#include <gmock/gmock.h>

#include <set>

#include "../stage/temporary_folder.h"
#include "stage/output/png_file.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"

namespace {

constexpr const char* kScene = R"(
size = [64, 40]
frame_rate = 10
length = 1
prewarm = 0.3
seed = 3
background = [0.1, 0.2, 0.3]
bits = 16
camera = { position = [0, 0, 150], pan = 2, tilt = 1, roll = 3, field_of_view = 45 }

[images]
sheet = { file = "p%d.png", frame_rate = 5, start = 0.1, play = "hold" }
switched = "p1.png"

[[container]]
name = "smoke"
position = [-40, -30, 0]
rotation = [0, 0, 10]
scale = [1, 1, 1]
parameters = { birth_rate = 60, life_time = 0.6, turbulence_x = 3, size_birth_x = 9 }
texture = "sheet"
blend = "alpha"
opacity = 0.8

[[container]]
name = "defaults"
plugin = "smoke"
texture = "switched"

[[container]]
name = "free"
plugin = "smoke"

[[container]]
name = "anchor"
position = [30, 0, 0]
[[container.container]]
name = "box"
geometry = { kind = "rectangle", width = 20, height = 12, fill = [1, 0, 0] }

[[container]]
name = "round"
position = [-60, 30, 0]
geometry = { kind = "ellipse", width = 20, height = 20, segments = 5, fill = [0, 1, 0] }

[[container]]
name = "corners"
position = [-30, 40, 0]
geometry = { kind = "polygon", points = [[0, 0], [16, 0], [0, 16]], fill = [0, 1, 1] }

[[container]]
name = "letters"
position = [20, 30, 0]
geometry = { kind = "text", text = "Rg\nl", font = "DejaVu Sans", size = 24, align = "left", fill = [1, 1, 0] }

[[container]]
name = "traced"
position = [60, -20, 0]
geometry = { kind = "picture", file = "p3.png", width = 30, height = 30, threshold = 0.5, fill = [1, 0, 1] }

[[at]]
time = 0.3
container = "smoke"
parameters = { gravity = 5 }

[[at]]
time = 0.6
container = "defaults"
press = "reset"

[[at]]
time = 0.4
container = "corners"
geometry = { kind = "rectangle", width = 9, height = 9, fill = [1, 1, 1] }

[[at]]
time = 0.5
image = "switched"
file = "p2.png"

[[track]]
container = "box"
property = "position"
keys = [{ time = 0, value = [0, 0, 0] }, { time = 1, value = [0, -30, 0], ease = "linear" }]
)";

// A key, a piece of the scene that stands there once, and what takes its place.
struct KeyChange {
    const char* key;
    const char* from;
    const char* to;
};

const KeyChange kChanges[] = {
    {"size", "size = [64, 40]", "size = [64, 42]"},
    {"frame_rate", "frame_rate = 10", "frame_rate = 12"},
    {"length", "length = 1", "length = 1.1"},
    {"prewarm", "prewarm = 0.3", "prewarm = 0.5"},
    {"seed", "seed = 3", "seed = 4"},
    {"background", "background = [0.1, 0.2, 0.3]", "background = '#203040'"},
    {"bits", "bits = 16", "bits = 8"},
    {"camera", "camera = {", "# camera = {"},
    {"camera.position", "position = [0, 0, 150]", "position = [0, 5, 150]"},
    {"camera.look_at", "pan = 2, tilt = 1", "look_at = [9, 0, 0]"},
    {"camera.pan", "pan = 2", "pan = 5"},
    {"camera.tilt", "tilt = 1", "tilt = 5"},
    {"camera.roll", "roll = 3", "roll = 9"},
    {"camera.field_of_view", "field_of_view = 45", "field_of_view = 60"},
    {"images", "switched = \"p1.png\"", "switched = \"p3.png\""},
    {"images.NAME.file", "file = \"p%d.png\"", "file = \"q%d.png\""},
    {"images.NAME.frame_rate", "frame_rate = 5", "frame_rate = 9"},
    {"images.NAME.start", "start = 0.1", "start = 0.4"},
    {"images.NAME.play", "play = \"hold\"", "play = \"loop\""},
    {"container", "[[container]]\nname = \"round\"",
     "[[container]]\nname = \"more\"\nplugin = 'smoke'\n[[container]]\nname = \"round\""},
    {"container.name", "name = \"free\"", "name = \"other\""},
    {"container.parent", "position = [-60, 30, 0]", "position = [-60, 30, 0]\nparent = 'anchor'"},
    {"container.position", "position = [-40, -30, 0]", "position = [-40, -20, 0]"},
    {"container.rotation", "rotation = [0, 0, 10]", "rotation = [0, 0, 80]"},
    {"container.scale", "scale = [1, 1, 1]", "scale = [1, 2, 1]"},
    {"container.plugin", "name = \"free\"\nplugin = \"smoke\"", "name = \"free\"\nplugin = \"TovuSpiral\""},
    {"container.parameters", "size_birth_x = 9", "size_birth_x = 20"},
    {"container.texture", "texture = \"sheet\"", "texture = 'none'"},
    {"container.blend", "blend = \"alpha\"", "blend = \"additive\""},
    {"container.opacity", "opacity = 0.8", "opacity = 0.4"},
    {"container.geometry", "geometry = { kind = \"ellipse\"", "# geometry = { kind = \"ellipse\""},
    {"container.container", "[[container.container]]", "[[container]]"},
    {"container.geometry.kind", "kind = \"rectangle\", width = 20", "kind = \"ellipse\", width = 20"},
    {"container.geometry.width", "width = 20, height = 12", "width = 40, height = 12"},
    {"container.geometry.height", "height = 12", "height = 40"},
    {"container.geometry.segments", "segments = 5", "segments = 3"},
    {"container.geometry.points", "[16, 0]", "[40, 0]"},
    {"container.geometry.file", "file = \"p3.png\"", "file = \"p1.png\""},
    {"container.geometry.text", "text = \"Rg\\nl\"", "text = \"R\""},
    {"container.geometry.font", "font = \"DejaVu Sans\"", "font = \"DejaVu Serif\""},
    {"container.geometry.size", "size = 24", "size = 40"},
    {"container.geometry.align", "align = \"left\"", "align = \"right\""},
    {"container.geometry.threshold", "threshold = 0.5", "threshold = 0.8"},
    {"container.geometry.fill", "fill = [0, 1, 1]", "fill = [1, 0.5, 1]"},
    {"at", "[[at]]\ntime = 0.5",
     "[[at]]\ntime = 0.1\ncontainer = 'smoke'\nparameters = { birth_rate = 0 }\n[[at]]\ntime = 0.5"},
    {"at.time", "time = 0.3", "time = 0.7"},
    {"at.container", "container = \"smoke\"", "container = \"defaults\""},
    {"at.parameters", "gravity = 5", "gravity = -5"},
    {"at.press", "press = \"reset\"", "parameters = {}"},
    {"at.geometry", "width = 9, height = 9", "width = 30, height = 30"},
    {"at.image", "image = \"switched\"", "image = \"sheet\""},
    {"at.file", "file = \"p2.png\"", "file = \"p3.png\""},
    {"track", "[[track]]",
     "[[track]]\ncontainer = 'smoke'\nproperty = 'scale'\nkeys = [{ time = 0, value = [2, 2, 2] }]\n[[track]]"},
    {"track.container", "container = \"box\"", "container = \"round\""},
    {"track.property", "property = \"position\"", "property = \"rotation\""},
    {"track.keys", "keys = [{ time = 0, value = [0, 0, 0] }, ", "keys = ["},
    {"track.keys.time", "{ time = 1, value", "{ time = 0.5, value"},
    {"track.keys.value", "[0, -30, 0]", "[20, -30, 0]"},
    {"track.keys.ease", "ease = \"linear\"", "ease = \"step\""},
};

class SceneKeys : public testing::Test {
  protected:
    SceneKeys() {
        for (int number = 1; number <= 3; ++number) {
            stage::Picture picture{8, 8, stage::kPictureLuminanceAlpha, {}};
            for (int i = 0; i < 64; ++i) {
                const int value = number == 1 ? (i % 8 < 4 ? 255 : 0) : number == 2 ? (i < 32 ? 255 : 0) : i % 8 * 36;
                picture.bytes.insert(picture.bytes.end(), {static_cast<uint8_t>(value), static_cast<uint8_t>(value)});
            }
            for (const char* row : {"p", "q"})
                EXPECT_TRUE(stage::write_png(
                    folder_ / (row + std::to_string(*row == 'p' ? number : 4 - number) + ".png"), picture));
        }
    }

    // All pictures of the scene, one after the other.
    std::vector<uint8_t> pictures(const std::string& text) const {
        std::vector<uint8_t> bytes;
        const auto scene = stage::read_scene(text, folder_ / "scene.toml");
        auto built = scene ? stage::build_scene(*scene, TOVU_SMOKE_PLUGIN) : scene.error();
        auto canvas = built ? stage::make_canvas(*scene) : built.error();
        if (!canvas) {
            ADD_FAILURE() << canvas.error().message;
            return bytes;
        }
        stage::SceneRun run = stage::start_run(std::move(*built));
        for (int64_t frame = 0; frame < stage::frame_count(*scene); ++frame) {
            EXPECT_TRUE(stage::run_until(run, frame));
            const auto picture = stage::draw_scene(*canvas, run.built);
            EXPECT_TRUE(picture);
            bytes.insert(bytes.end(), picture->bytes.begin(), picture->bytes.end());
        }
        return bytes;
    }

    const TemporaryFolder folder_;
};

TEST_F(SceneKeys, EachChangesThePictures) {
    const std::vector<uint8_t> unchanged = pictures(kScene);
    EXPECT_EQ(unchanged, pictures(kScene));
    std::set<std::string> changed;
    for (const auto& [key, from, to] : kChanges) {
        SCOPED_TRACE(key);
        std::string text = kScene;
        const size_t at = text.find(from);
        ASSERT_NE(std::string::npos, at);
        ASSERT_EQ(at, text.rfind(from)) << "stands there twice";
        EXPECT_NE(unchanged, pictures(text.replace(at, std::string(from).size(), to)));
        changed.insert(key);
    }
    const std::vector<std::string> keys = stage::scene_keys();
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), changed) << "a key has no row";
}

}  // namespace
