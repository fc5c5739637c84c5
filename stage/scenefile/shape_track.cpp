#include "shape_track.h"

#include <fmt/format.h>

#include "parameter_check.h"
#include "shape_build.h"
#include "stage/names.h"

namespace stage {

namespace {

constexpr double kBefore = -1.0;  // seconds; earlier than any time of a timeline

float between(float from, float to, double fraction) {
    return static_cast<float>(from + fraction * (static_cast<double>(to) - from));
}

// Interpolates between meshes with equal numbers of outlines and corners.
std::vector<Mesh> between(const std::vector<Mesh>& from, const std::vector<Mesh>& to, double fraction) {
    std::vector<Mesh> meshes = from;
    for (size_t m = 0; m < meshes.size(); ++m) {
        for (size_t i = 0; i < meshes[m].vertices.size(); ++i) {
            Vector3& vertex = meshes[m].vertices[i];
            const Vector3& target = to[m].vertices[i];
            vertex = {between(vertex.x, target.x, fraction), between(vertex.y, target.y, fraction),
                      between(vertex.z, target.z, fraction)};
        }
    }
    return meshes;
}

// Checks that the numbers of outlines and corners are equal, so that one shape can deform into the other.
Result<Done> check_counts(const std::vector<Mesh>& from, const std::vector<Mesh>& to) {
    if (from.size() != to.size())
        return Error{
            fmt::format("{} outline{} here, {} in the key before", to.size(), to.size() == 1 ? "" : "s", from.size())};
    for (size_t m = 0; m < from.size(); ++m) {
        if (from[m].vertices.size() != to[m].vertices.size())
            return Error{fmt::format("{} corners in outline {} here, {} in the key before", to[m].vertices.size(),
                                     m + 1, from[m].vertices.size())};
    }
    return Done{};
}

void check_image(const SceneDescription& scene, const GeometryDescription& geometry, Messages& messages) {
    if (geometry.image.empty() || is_image_name(scene, geometry.image)) return;
    messages.errors.push_back(fmt::format("{}: unknown image '{}': {}", geometry.image_place, geometry.image,
                                          name_hint(geometry.image, image_names(scene))));
}

void add_key(ShapeTrack& track, double time, Ease ease, const GeometryDescription& geometry,
             const SceneDescription& scene, Messages& messages) {
    check_image(scene, geometry, messages);
    Result<std::vector<Mesh>> meshes = build_shape(geometry, messages.warnings);
    if (!meshes) {
        messages.errors.push_back(geometry.place + ": " + meshes.error().message);
        return;
    }
    if (!track.keys.empty() && ease != Ease::kStep) {
        if (const Result<Done> checked = check_counts(track.keys.back().meshes, *meshes); !checked)
            messages.errors.push_back(
                fmt::format("{}: shapes that deform must have equal numbers of outlines and corners, but there are {}; "
                            "ease = \"step\" switches at once",
                            geometry.place, checked.error().message));
    }
    track.keys.push_back({time, ease, std::move(*meshes), geometry.fill, geometry.image});
}

// Adds the shapes of the timeline. A container without a shape at the start has no outlines before the first of them.
void add_switches(ShapeTrack& track, const SceneDescription& scene, Messages& messages) {
    for (const TimelineEntry& entry : scene.timeline) {
        if (!entry.geometry || entry.container != track.container) continue;
        if (track.keys.empty()) track.keys.push_back({kBefore, Ease::kStep, {}});
        add_key(track, entry.time, Ease::kStep, *entry.geometry, scene, messages);
    }
}

}  // namespace

std::vector<ShapeTrack> build_shape_tracks(const SceneDescription& scene, Messages& messages) {
    std::vector<ShapeTrack> tracks;
    for (size_t i = 0; i < scene.containers.size(); ++i) {
        ShapeTrack track;
        track.container = static_cast<int32_t>(i);
        if (const auto& geometry = scene.containers[i].geometry)
            add_key(track, kBefore, Ease::kStep, *geometry, scene, messages);
        add_switches(track, scene, messages);
        for (const Track& written : scene.tracks) {
            if (written.property != TrackProperty::kGeometry || written.container != track.container) continue;
            for (const TrackKey& key : written.keys) add_key(track, key.time, key.ease, *key.geometry, scene, messages);
        }
        if (!track.keys.empty()) tracks.push_back(std::move(track));
    }
    return tracks;
}

void show_shape(Stage& stage, int32_t container_handle, ShapeTrack& track, double seconds) {
    const KeyMoment moment = key_moment(track.keys, seconds);
    if (track.shown == moment) return;
    track.shown = moment;
    const std::vector<Mesh>& from = track.keys[moment.key].meshes;
    set_mesh_geometry(
        stage, container_handle,
        moment.fraction == 0.0 ? from : between(from, track.keys[moment.key + 1].meshes, moment.fraction));
}

std::optional<Triple> shown_fill(const ShapeTrack& track) {
    const KeyMoment moment = track.shown.value_or(KeyMoment{});
    std::optional<Triple> fill = track.keys[moment.key].fill;
    if (moment.fraction == 0.0 || !fill || !track.keys[moment.key + 1].fill) return fill;
    for (size_t i = 0; i < 3; ++i)
        (*fill)[i] = between((*fill)[i], (*track.keys[moment.key + 1].fill)[i], moment.fraction);
    return fill;
}

const std::string& shown_image(const ShapeTrack& track) {
    return track.keys[track.shown.value_or(KeyMoment{}).key].image;
}

}  // namespace stage
