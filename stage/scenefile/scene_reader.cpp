#include "scene_reader.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "built_in_images.h"
#include "container_reader.h"
#include "image_reader.h"
#include "look_layers.h"
#include "messages.h"
#include "stage/assets/picture.h"
#include "stage/names.h"
#include "timeline_reader.h"

namespace stage {

namespace {

void read_size(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    const toml::array* array = entry.node.as_array();
    if (array == nullptr || array->size() != 2) {
        report(reader, entry.node.source(),
               fmt::format("size must be [width, height] in pixels, not {}", describe(entry.node)));
        return;
    }
    for (size_t i = 0; i < 2; ++i)
        read_integer(reader, {i == 0 ? "width" : "height", *array->get(i)}, 1, kMaxPictureSide, scene.size[i]);
}

// Reads "transparent", "#rrggbb" or three numbers.
void read_background(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene) {
    const auto* text = entry.node.as_string();
    if (text != nullptr && text->get() == "transparent") {
        scene.background.reset();
        return;
    }
    Triple color = {0, 0, 0};
    if (text == nullptr && entry.node.is_array()) {
        if (read_color(reader, entry, color)) scene.background = color;
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
        color[i] = static_cast<float>(std::stoi(text->get().substr(1 + 2 * i, 2), nullptr, 16)) / 255.0f;
    scene.background = color;
}

const KeyRow<CameraDescription> kCameraKeys[] = {
    {"position", [](KeyReader& r, const KeyedNode& e, CameraDescription& c) { read_triple(r, e, c.position); }},
    {"look_at",
     [](KeyReader& r, const KeyedNode& e, CameraDescription& c) {
         Triple target{};
         if (read_triple(r, e, target)) c.look_at = target;
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

// The order matters: images use the frame rate as their default, and the timeline refers to images and containers.
const KeyRow<SceneDescription> kSceneKeys[] = {
    {"size", read_size},
    {"frame_rate", [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_frame_rate(r, e, s.frame_rate); }},
    {"length",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_number(r, e, 0.001, kMaxSeconds, s.length); }},
    {"prewarm",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_number(r, e, 0.0, kMaxSeconds, s.prewarm); }},
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
    {"shoulder",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) {
         float start = 0.0f;
         if (read_number(r, e, 0.0, 0.99, start)) s.shoulder = start;
         if (s.bits == 8) report(r, e.node.source(), "shoulder needs bits = 16: a frame of 8 bits clips light itself");
     }},
    {"camera", read_camera},
    {"images",
     [](KeyReader& r, const KeyedNode& e, SceneDescription& s) { read_images(r, e, s.frame_rate, s.images); }},
    {"container", read_containers},
    {"at", read_timeline},
    {"track", read_tracks},
};

}  // namespace

Result<SceneDescription> read_scene(const std::string& text, const std::filesystem::path& file) {
    const Result<ImageDescriptions>& built_in = built_in_images();
    if (!built_in) return built_in.error();
    KeyReader reader{file.string(), file.parent_path(), {}, &*built_in};
    SceneDescription scene;
    scene.file = file;
    try {
        const toml::table table = toml::parse(text, file.string());
        read_keys(reader, table, "the scene", kSceneKeys, scene);
        copy_changes_to_layers(scene);
    } catch (const toml::parse_error& error) {
        report_parse_error(reader, error);
    }
    if (scene.containers.empty() && reader.errors.empty())
        report_at(reader, file.string() + ":1:1", "a scene needs at least one [[container]]");
    if (!reader.errors.empty()) return error_of(reader.errors);
    return scene;
}

Result<SceneDescription> load_scene_file(const std::filesystem::path& file) {
    if (std::error_code ignored; std::filesystem::is_directory(file, ignored))
        return Error{fmt::format("{}: is a folder; name a scene file, which ends in .toml", file.string())};
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return Error{fmt::format("{}: cannot be read: {}", file.string(), std::strerror(errno))};
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

}  // namespace stage
