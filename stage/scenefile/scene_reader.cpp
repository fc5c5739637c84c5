#include "scene_reader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <fstream>
#include <sstream>

#include "container_reader.h"
#include "image_reader.h"
#include "stage/names.h"
#include "timeline_reader.h"

namespace stage {

namespace {

constexpr double kLongest = 86400.0;  // seconds: a day
constexpr double kLargest = 1e9;      // of a coordinate

void read_size(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    const toml::array* array = entry.node.as_array();
    if (array == nullptr || array->size() != 2) {
        report(reader, entry.node.source(),
               fmt::format("size must be [width, height] in pixels, not {}", describe(entry.node)));
        return;
    }
    for (size_t i = 0; i < 2; ++i) {
        int64_t pixels = scene.size[i];
        read_integer(reader, {i == 0 ? "width" : "height", *array->get(i)}, 1, 16384, pixels);
        scene.size[i] = static_cast<int32_t>(pixels);
    }
}

// "transparent", "#rrggbb" or three numbers.
void read_background(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    const auto* text = entry.node.as_string();
    if (text != nullptr && text->get() == "transparent") {
        scene.background.reset();
        return;
    }
    Triple colour = {0, 0, 0};
    if (text == nullptr && entry.node.is_array()) {
        if (read_triple(reader, entry, 0.0, 1.0, colour)) scene.background = colour;
        return;
    }
    const bool hexadecimal = text != nullptr && text->get().size() == 7 && text->get()[0] == '#' &&
                             text->get().find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
    if (!hexadecimal) {
        report(reader, entry.node.source(),
               fmt::format("background must be \"transparent\", \"#rrggbb\" or [red, green, blue] with numbers from 0 "
                           "to 1, not {}",
                           describe(entry.node)));
        return;
    }
    for (size_t i = 0; i < 3; ++i)
        colour[i] = static_cast<float>(std::stoi(text->get().substr(1 + 2 * i, 2), nullptr, 16)) / 255.0f;
    scene.background = colour;
}

const KeyRow<CameraDescription> kCameraKeys[] = {
    {"position", [](KeyReader& r, const KeyedNode& e,
                    CameraDescription& c) { read_triple(r, e, -kLargest, kLargest, c.position); }},
    {"look_at",
     [](KeyReader& r, const KeyedNode& e, CameraDescription& c) {
         Triple target{};
         if (read_triple(r, e, -kLargest, kLargest, target)) c.look_at = target;
     }},
    {"pan", [](KeyReader& r, const KeyedNode& e, CameraDescription& c) { read_number(r, e, -360.0, 360.0, c.pan); }},
    {"tilt", [](KeyReader& r, const KeyedNode& e, CameraDescription& c) { read_number(r, e, -90.0, 90.0, c.tilt); }},
    {"roll", [](KeyReader& r, const KeyedNode& e, CameraDescription& c) { read_number(r, e, -360.0, 360.0, c.roll); }},
    {"field_of_view",
     [](KeyReader& r, const KeyedNode& e, CameraDescription& c) { read_number(r, e, 1.0, 179.0, c.field_of_view); }},
};

void read_camera(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    const toml::table* table = read_table(reader, entry);
    if (table == nullptr) return;
    read_keys(reader, *table, "[camera]", kCameraKeys, scene.camera);
    for (const char* angle : {"pan", "tilt"}) {
        if (table->contains("look_at") && table->contains(angle))
            report(reader, table->get(angle)->source(),
                   fmt::format("{} and look_at both turn the camera: leave one out", angle));
    }
    if (scene.camera.look_at == scene.camera.position && scene.camera.look_at)
        report(reader, table->get("look_at")->source(), "look_at must be another point than the camera's position");
}

// The frame rate stands before the images, which have it unless they say otherwise; images and containers before the
// timeline, which refers to them.
const KeyRow<SceneDescription> kSceneKeys[] = {
    {"size", read_size},
    {"frame_rate",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_number(r, e, 1.0, 1000.0, s.frame_rate); }},
    {"length",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_number(r, e, 0.001, kLongest, s.length); }},
    {"prewarm",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_number(r, e, 0.0, kLongest, s.prewarm); }},
    {"seed",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) {
         int64_t seed = s.seed;
         read_integer(r, e, 0, UINT32_MAX, seed);
         s.seed = static_cast<uint32_t>(seed);
     }},
    {"background", read_background},
    {"bits",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) {
         const auto* bits = e.node.as_integer();
         if (bits != nullptr && (bits->get() == 8 || bits->get() == 16))
             s.bits = static_cast<int32_t>(bits->get());
         else
             report(r, e.node.source(), fmt::format("bits must be 8 or 16, not {}", describe(e.node)));
     }},
    {"camera", read_camera},
    {"images", read_images},
    {"container", [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_containers(r, e, s.containers); }},
    {"at", read_timeline},
    {"track", read_tracks},
};

}  // namespace

Result<SceneDescription> read_scene(const std::string& text, const std::filesystem::path& file) {
    KeyReader reader{file.string(), file.parent_path(), {}};
    SceneDescription scene;
    scene.file = file;
    try {
        const toml::table table = toml::parse(text, file.string());
        read_keys(reader, table, "the scene", kSceneKeys, scene);
    } catch (const toml::parse_error& error) {
        report(reader, error.source(), fmt::format("this is not TOML: {}", error.description()));
    }
    if (scene.containers.empty() && reader.errors.empty())
        report_at(reader, file.string() + ":1:1", "a scene needs at least one [[container]]");
    if (!reader.errors.empty()) return Error{fmt::format("{}", fmt::join(reader.errors, "\n"))};
    return scene;
}

Result<SceneDescription> load_scene_file(const std::filesystem::path& file) {
    std::error_code ignored;
    std::ifstream stream(file, std::ios::binary);
    if (!stream || std::filesystem::is_directory(file, ignored))
        return Error{fmt::format("{}: there is no scene file of this name that can be read", file.string())};
    std::ostringstream text;
    text << stream.rdbuf();
    return read_scene(text.str(), file);
}

std::vector<std::string> scene_keys() {
    std::vector<std::string> keys = key_names(kSceneKeys);
    for (const std::string& key : key_names(kCameraKeys)) keys.push_back("camera." + key);
    append_image_keys(keys);
    append_container_keys(keys);
    append_timeline_keys(keys);
    return keys;
}

Result<Done> override_parameter(SceneDescription& scene, const std::string& assignment) {
    const Place place = "--set " + assignment;
    const size_t equals = assignment.find('=');
    const size_t dot = assignment.rfind('.', equals);
    if (equals == std::string::npos || dot == std::string::npos || dot == 0 || dot + 1 == equals)
        return Error{place + ": must be container.parameter=value, such as --set smoke.birth_rate=200"};
    const std::string container = assignment.substr(0, dot);
    const std::string name = assignment.substr(dot + 1, equals - dot - 1);
    const std::string written = assignment.substr(equals + 1);
    KeyReader reader{place, {}, {}};
    std::vector<ParameterSetting> settings;
    try {
        const toml::table table = toml::parse(fmt::format("settings = {{ value = {} }}", written));
        read_settings(reader, {"settings", *table.get("settings")}, settings);
    } catch (const toml::parse_error&) {
        settings.push_back({name, written, place});
    }
    if (settings.size() != 1) return Error{place + ": the value must be a number, true, false or a text"};
    settings[0].name = name;
    settings[0].place = place;
    std::vector<std::string> names;
    for (ContainerDescription& candidate : scene.containers) {
        if (candidate.name == container && candidate.has_plugin) {
            candidate.parameters.push_back(settings[0]);
            return Done{};
        }
        if (candidate.has_plugin) names.push_back(candidate.name);
    }
    return Error{
        fmt::format("{}: no container '{}' carries a plug-in: {}", place, container, name_hint(container, names))};
}

}  // namespace stage
