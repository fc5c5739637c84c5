#include "parameter_strip.h"

#include <algorithm>

#include "stage/output/whole_file.h"
#include "stage/replay/fnv1a.h"
#include "stage/scenefile/input_files.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

using stage::Error;
using stage::ParameterNotes;
using stage::ParameterSetting;
using stage::Picture;
using stage::Result;
using stage::SceneDescription;

namespace {

constexpr int32_t kGap = 4;  // pixels between two pictures, white

uint64_t digest_of(const ParameterNotes& notes, const SceneDescription& scene) {
    stage::Fnv1a digest;
    digest.add(std::string_view(notes.name));
    for (const stage::ParameterValue& value : notes.picture->values) digest.add(std::string_view(value_text(value)));
    for (const ParameterSetting& setting : notes.picture->with)
        digest.add(std::string_view(setting.name + "=" + value_text(setting.value)));
    for (const std::filesystem::path& file : stage::input_files(scene))
        digest.add(std::string_view(stage::read_whole_file(file)));
    return digest.value;
}

Result<ParameterStrip> make_strip(const ParameterNotes& notes, const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / (notes.picture->scene + ".toml");
    const Result<SceneDescription> scene = stage::load_scene_file(file);
    if (!scene) return scene.error();
    const auto carrier = std::find_if(scene->containers.begin(), scene->containers.end(),
                                      [](const auto& container) { return container.has_plugin; });
    if (carrier == scene->containers.end()) return Error{file.string() + ": no container carries a plug-in"};
    const auto index = carrier - scene->containers.begin();
    ParameterStrip strip{notes, {}, {}, digest_of(notes, *scene)};
    const std::string text = stage::read_whole_file(file);
    if (text.starts_with("# ")) strip.purpose = text.substr(2, text.find('\n') - 2);
    for (const stage::ParameterValue& value : notes.picture->values) {
        SceneDescription one = *scene;
        auto& settings = one.containers[static_cast<size_t>(index)].parameters;
        settings.insert(settings.end(), notes.picture->with.begin(), notes.picture->with.end());
        settings.push_back({notes.name, value, "the picture of " + notes.name});
        strip.scenes.push_back(std::move(one));
    }
    return strip;
}

Result<Picture> draw_last_frame(const SceneDescription& scene, const std::string& plugin) {
    Result<stage::BuiltScene> built = stage::build_scene(scene, plugin);
    if (!built) return built.error();
    Result<stage::SceneCanvas> canvas = stage::make_canvas(scene);
    if (!canvas) return canvas.error();
    stage::SceneRun run = stage::start_run(std::move(*built));
    if (const auto done = stage::run_until(run, stage::frame_count(scene) - 1); !done) return done.error();
    return stage::draw_scene(*canvas, run.built);
}

// Appends a picture on the right. All pictures have four channels and the same height.
void append_picture(Picture& strip, const Picture& picture) {
    const int32_t gap = strip.width == 0 ? 0 : kGap;
    Picture wider{strip.width + gap + picture.width, picture.height, stage::kPictureRgba, {}};
    for (int32_t row = 0; row < picture.height; ++row) {
        for (const Picture* part : {&std::as_const(strip), &picture}) {
            const auto bytes = static_cast<std::ptrdiff_t>(part->width) * 4;
            const auto first = part->bytes.begin() + row * bytes;
            wider.bytes.insert(wider.bytes.end(), first, first + bytes);
            if (part == &strip) wider.bytes.insert(wider.bytes.end(), static_cast<size_t>(gap) * 4, 255);
        }
    }
    strip = std::move(wider);
}

}  // namespace

Result<std::vector<ParameterStrip>> parameter_strips(const NotedPlugin& noted, const std::filesystem::path& scenes) {
    std::vector<ParameterStrip> strips;
    for (const ParameterNotes& notes : noted.notes.parameters) {
        if (!notes.picture) continue;
        Result<ParameterStrip> strip = make_strip(notes, scenes);
        if (!strip) return strip.error();
        strips.push_back(std::move(*strip));
    }
    return strips;
}

Result<Picture> draw_strip(const ParameterStrip& strip, const std::string& plugin) {
    Picture whole;
    for (const SceneDescription& scene : strip.scenes) {
        const Result<Picture> picture = draw_last_frame(scene, plugin);
        if (!picture) return picture.error();
        append_picture(whole, *picture);
    }
    return whole;
}

}  // namespace tovu
