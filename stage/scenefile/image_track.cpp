#include "image_track.h"

#include <fmt/format.h>

#include <algorithm>

#include "stage/assets/picture_file.h"
#include "stage/plugins/instance.h"
#include "timeline.h"

namespace stage {

namespace {

std::string size_text(const std::array<int32_t, 2>& size) {
    return fmt::format("{} x {} pixels", size[0], size[1]);
}

void check_sizes(const ImageDescription& image, std::vector<std::string>& errors) {
    std::optional<std::array<int32_t, 2>> first;
    for (const std::filesystem::path& file : image.files) {
        const Result<std::array<int32_t, 2>> size = read_picture_size(file);
        if (!size) {
            errors.push_back(image.place + ": " + size.error().message);
        } else if (first && *first != *size) {
            errors.push_back(fmt::format("{}: {} has {}, {} has {}: the pictures of a sequence must have one size",
                                         image.place, file.string(), size_text(*size), image.files.front().string(),
                                         size_text(*first)));
            return;
        } else {
            first = *size;
        }
    }
}

int64_t due(const ImageTrack& track, double seconds) {
    const auto later = std::upper_bound(track.switches.begin(), track.switches.end(), seconds,
                                        [](double time, const TimelineEntry& entry) { return time < entry.time; });
    const auto passed = later - track.switches.begin();
    if (passed == 0) return picture_at(track.description, seconds);
    return static_cast<int64_t>(track.description.files.size()) + passed - 1;
}

// position: as in ImageTrack::shown; -1 gives zeros in the size of the first picture.
Result<Picture> picture_of(const ImageTrack& track, int64_t position) {
    const std::vector<std::filesystem::path>& files = track.description.files;
    const size_t index = static_cast<size_t>(std::max<int64_t>(position, 0));
    const bool switched = index >= files.size();
    Result<Picture> picture = read_picture(switched ? track.switches[index - files.size()].file : files[index]);
    if (!picture)
        return Error{(switched ? track.switches[index - files.size()].file_place : track.description.place) + ": " +
                     picture.error().message};
    if (position < 0) std::fill(picture->bytes.begin(), picture->bytes.end(), uint8_t{0});
    return picture;
}

void notify_plugins(Stage& stage, const std::string& image) {
    const std::vector<int32_t> instances = stage.instance_handles;
    for (const int32_t handle : instances) {
        const Geometry* geometry = find_geometry(stage, handle);
        if (geometry == nullptr) continue;
        const int32_t container = geometry->container_handle;
        const std::vector<ParameterInfo>& parameters = plugin(geometry->instance->plugin).parameters;
        for (size_t i = 0; i < parameters.size(); ++i) {
            if (parameters[i].kind != ParameterKind::kImage) continue;
            const Result<ParameterValue> value = get_parameter(stage, container, parameters[i].name);
            if (value && *value == ParameterValue(image)) notify_changed(stage, container, static_cast<int32_t>(i));
        }
    }
}

}  // namespace

std::vector<ImageTrack> make_image_tracks(const SceneDescription& scene, std::vector<std::string>& errors) {
    std::vector<ImageTrack> tracks;
    for (const auto& [name, description] : scene.images) {
        ImageTrack track{name, description, {}};
        check_sizes(description, errors);
        for (const TimelineEntry& entry : scene.timeline) {
            if (entry.image != name) continue;
            if (const auto size = read_picture_size(entry.file); !size)
                errors.push_back(entry.file_place + ": " + size.error().message);
            track.switches.push_back(entry);
        }
        tracks.push_back(std::move(track));
    }
    return tracks;
}

Result<Done> show_image(Stage& stage, ImageTrack& track, double seconds) {
    const int64_t position = due(track, seconds);
    if (track.handle != kNoObject && track.shown == position) return Done{};
    Result<Picture> picture = picture_of(track, position);
    if (!picture) return picture.error();
    track.shown = position;
    if (track.handle == kNoObject) {
        const Result<int32_t> added =
            add_image(stage, track.name, picture->width, picture->height, picture->format, std::move(picture->bytes));
        if (!added) return Error{track.description.place + ": " + added.error().message};
        track.handle = *added;
        return Done{};
    }
    const Image* image = find_image(stage, track.handle);
    const bool same = image != nullptr && image->width == picture->width && image->height == picture->height &&
                      image->format == picture->format;
    const Result<Done> replaced =
        replace_image(stage, track.handle, picture->width, picture->height, picture->format, std::move(picture->bytes));
    if (!replaced) return Error{track.description.place + ": " + replaced.error().message};
    if (!same) notify_plugins(stage, track.name);
    return Done{};
}

}  // namespace stage
