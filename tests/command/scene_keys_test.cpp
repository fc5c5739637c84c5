// Every key of a scene file has an effect: changing its value changes the pictures.
#include <algorithm>
#include <numeric>
#include <set>

#include "scene_pictures.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"

namespace {

// <KEY: this -> that> becomes "that" in the variant for the key and "this" in all others.
constexpr const char* kScene = R"(
size = <size: [64, 40] -> [64, 42]>
frame_rate = <frame_rate: 10 -> 12>
length = <length: 1 -> 1.1>
prewarm = <prewarm: 0.3 -> 0.5>
seed = <seed: 3 -> 4>
background = <background: [0.1, 0.2, 0.3] -> "#203040">
bits = <bits: 16 -> 8>
<shoulder: -> shoulder = 0.1 #>
at = [
    { time = <at.time: 0.3 -> 0.7>, container = "smoke", parameters = { gravity = <at.parameters: 5 -> -5> } },
    { time = 0.2, container = <at.container: "smoke" -> "defaults">, parameters = { gravity = 9 } },
    { time = 0.6, container = "defaults", <at.press: press = "reset" -> parameters = {}> },
    { time = 0.6, container = "defaults", burst = <at.burst: 2 -> 9> },
    { time = 0.4, container = "round", geometry = { kind = "text", text = <at.geometry: "I" -> "M">, fill = [1, 0, 0] } },
    { time = 0.5, image = <at.image: "switched" -> "sheet">, file = "assets/logo_flame.png" },
    { time = 0.7, image = "switched", file = <at.file: "assets/wind_vortex.png" -> "assets/logo_wipe12.png"> },
]
[[track]]
container = <track.container: "box" -> "round">
property = <track.property: "position" -> "rotation">
keys = [
    { time = 0, value = [0, 0, 0] },
    { time = <track.keys.time: 0.3 -> 0.5>, value = [9, 0, 0], ease = <track.keys.ease: "linear" -> "step"> },
    { time = 0.7, value = <track.keys.value: [0, -30, 0] -> [20, -30, 0]> },
]
[[track]]
container = "defaults"
parameter = <track.parameter: "initial_rot_z" -> "wind_force">
keys = [{ time = 0, value = 0 }, { time = 0.5, value = 90 }]
[[track]]
container = "letters"
property = "opacity"
keys = [{ time = 0, value = <opacity of a track: 0.2 -> 0.6> }, { time = 0.5, value = 1 }]
[camera]
position = <camera.position: [0, 0, 150] -> [0, 5, 150]>
<camera.look_at: -> look_at = [9, 0, 0] # >pan = <camera.pan: 2 -> 5>
<camera.look_at: -> # >tilt = <camera.tilt: 1 -> 5>
roll = <camera.roll: 3 -> 9>
field_of_view = <camera.field_of_view: 45 -> 60>

[images.sheet]
file = "assets/logo_wipe%02d.png"
frame_rate = <images.NAME.frame_rate: 20 -> 30>
start = <images.NAME.start: -0.5 -> -0.3>
play = <images.NAME.play: "hold" -> "loop">
[images.switched]
file = <images.NAME.file: "assets/logo.png" -> "assets/wind_vortex.png">

[[container]]
name = "smoke"
position = <container.position: [-40, -30, 0] -> [-40, -20, 0]>
rotation = <container.rotation: [0, 0, 10] -> [0, 0, 80]>
scale = <container.scale: [1, 1, 1] -> [1, 2, 1]>
parameters = { birth_rate = 60, life_time = 0.6, turbulence_x = 3, size_birth_x = <container.parameters: 9 -> 20> }
texture = <container.texture: "sheet" -> "none">
blend = <container.blend: "alpha" -> "additive">
opacity = <container.opacity: 0.8 -> 0.4>
light.image = <container.light.image: "switched" -> "puff">
light.position = <container.light.position: [-40, 0] -> [-60, 0]>
light.size = <container.light.size: [40, 90] -> [60, 90]>
[[container]]
name = "defaults"
plugin = "smoke"
texture = "switched"
[[container]]
name = <container.name: "free" -> "other">
plugin = <container.plugin: "smoke" -> "TovuSpiral">

[[container]]
name = "look"
look = <container.look: "spray" -> "snow_dust">
<container.layers: -> layers.drops.texture = "none">

[[container]]
name = "anchor"
position = [30, 0, 0]
[[<container.container: container.container -> container>]]
name = "box"
geometry.kind = <container.geometry.kind: "rectangle" -> "ellipse">
geometry.width = <container.geometry.width: 20 -> 40>
geometry.height = <container.geometry.height: 12 -> 40>
geometry.fill = <container.geometry.fill: [1, 0, 0] -> [1, 0.5, 1]>
opacity = <opacity of a shape: 1 -> 0.4>
[[container]]
name = "round"
position = [-60, 30, 0]
<container.parent: -> parent = "anchor">
geometry.kind = "ellipse"
geometry.width = 20
geometry.height = 20
geometry.segments = <container.geometry.segments: 5 -> 3>
geometry.fill = [0, 1, 0]
[[container]]
name = "corners"
position = [-30, 40, 0]
geometry.kind = "polygon"
geometry.points = [[0, 0], [0, 16], <container.geometry.points: [16, 0] -> [40, 0]>]
geometry.fill = [0, 1, 1]
[[container]]
name = "letters"
position = [20, 30, 0]
geometry.kind = "text"
geometry.text = <container.geometry.text: "Rg\nl" -> "R">
geometry.font = <container.geometry.font: "DejaVu Sans" -> "DejaVu Serif">
geometry.size = <container.geometry.size: 24 -> 40>
geometry.align = <container.geometry.align: "left" -> "right">
geometry.fill = [1, 1, 0]
[[container]]
name = "traced"
position = [60, -20, 0]
geometry.kind = "picture"
geometry.file = <container.geometry.file: "assets/wind_vortex.png" -> "assets/logo.png">
geometry.threshold = <container.geometry.threshold: 0.2 -> 0.35>
geometry.width = 30
geometry.height = 30
geometry.fill = [1, 0, 1]
[[container]]
name = "plate"
position = [36, 10, -5]
depth_test = <container.depth_test: true -> false>
geometry.kind = "plate"
geometry.image = <container.geometry.image: "sheet" -> "switched">
geometry.width = <width of a plate: 30 -> 50>
geometry.height = 20
geometry.fill = <fill of a plate: [1, 1, 1] -> [0.5, 1, 1]>

)";

/// The variant of the scene for the key `changed`. Adds every key with a variant to `keys`.
std::string variant(const std::string& changed, std::set<std::string>& keys) {
    std::string text = kScene;
    for (size_t start = text.find('<'); start != std::string::npos; start = text.find('<', start)) {
        const size_t colon = text.find(':', start), arrow = text.find("->", colon), end = text.find('>', arrow + 2);
        const std::string key = text.substr(start + 1, colon - start - 1);
        keys.insert(key);
        text.replace(
            start, end + 1 - start,
            key == changed ? text.substr(arrow + 2, end - arrow - 2) : text.substr(colon + 1, arrow - colon - 1));
    }
    return text;
}

stage::SceneDescription scene_of(const std::string& text) {
    auto scene = stage::read_scene(text, TOVU_SOURCE_DIR "/scenes/keys.toml");
    if (!scene) throw std::runtime_error(scene.error().message);
    return *scene;
}

TEST(SceneKeys, EachChangesThePictures) {
    std::set<std::string> variants;
    const std::string text = variant("", variants);
    stage::SceneCanvas canvas = canvas_of(scene_of(text));  // the renderer compiles its shaders once
    const auto pictures = [&canvas](const std::string& one) {
        const stage::SceneDescription scene = scene_of(one);
        std::vector<int64_t> frames(static_cast<size_t>(stage::frame_count(scene)));
        std::iota(frames.begin(), frames.end(), 0);
        std::vector<uint8_t> bytes;
        for (const stage::Picture& picture : draw_frames(canvas, scene, frames).pictures)
            bytes.insert(bytes.end(), picture.bytes.begin(), picture.bytes.end());
        return bytes;
    };
    const std::vector<uint8_t> unchanged = pictures(text);
    EXPECT_TRUE(unchanged == pictures(text));
    std::set<std::string> keys = variants;
    for (const std::string& key : stage::scene_keys()) keys.insert(key);
    for (const std::string& key : keys) {
        const auto is_inside = [&](const std::string& other) { return other.starts_with(key + "."); };
        if (!variants.contains(key) && std::ranges::any_of(variants, is_inside)) continue;  // a table or an array
        if (key == "container.pulses") continue;  // affects only lint; tested there
        EXPECT_TRUE(unchanged != pictures(variant(key, variants))) << key;
    }
}

}  // namespace
