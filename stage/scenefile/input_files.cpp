#include "input_files.h"

namespace stage {

namespace {

void add_shape(const std::optional<GeometryDescription>& geometry, std::vector<std::filesystem::path>& files) {
    if (!geometry) return;
    if (!geometry->file.empty()) files.push_back(geometry->file);
    if (geometry->font.find('/') != std::string::npos) files.emplace_back(geometry->font);
}

}  // namespace

std::vector<std::filesystem::path> input_files(const SceneDescription& scene) {
    std::vector<std::filesystem::path> files = {scene.file};
    files.insert(files.end(), scene.looks.begin(), scene.looks.end());
    for (const auto& [name, image] : scene.images) files.insert(files.end(), image.files.begin(), image.files.end());
    for (const ContainerDescription& container : scene.containers) add_shape(container.geometry, files);
    for (const TimelineEntry& entry : scene.timeline) {
        if (!entry.file.empty()) files.push_back(entry.file);
        add_shape(entry.geometry, files);
    }
    for (const Track& track : scene.tracks)
        for (const TrackKey& key : track.keys) add_shape(key.geometry, files);
    return files;
}

}  // namespace stage
