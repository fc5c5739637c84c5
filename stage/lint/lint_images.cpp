// Rules about images that plug-ins read: masks for births, and fields such as wind.
#include <fmt/format.h>

#include <algorithm>

#include "linted.h"
#include "stage/assets/picture_file.h"

namespace stage {

namespace {

constexpr size_t kMaxFiles = 8;          // number of files of an image sequence that are read, evenly spaced
constexpr double kNoExtent = 0.001;      // a smaller width or height counts as 0
constexpr double kMinMaskExtent = 0.01;  // no births on smaller masks

struct Extent {
    double width = 0.0;  // units
    double height = 0.0;
    ParameterPair parameters;
};

// Lit pixels of an image, which are those whose first channel is not 0.
struct LitPixels {
    int64_t lit = 0;
    int64_t last_column = 0;  // lit pixels of the last column
    int64_t top_row = 0;
    int32_t width = 0;
    int32_t height = 0;
};

Extent extent_of(const LintedInstance& linted, const ParameterMoment& moment, const ParameterNotes& notes) {
    Extent extent;
    for (const ParameterPair& pair : notes.covers) {
        extent = {number_of(value_of(linted, moment, pair[0])), number_of(value_of(linted, moment, pair[1])), pair};
        if (extent.width >= kNoExtent && extent.height >= kNoExtent) break;
    }
    return extent;
}

LitPixels lit_pixels(const uint8_t* bytes, int32_t width, int32_t height, int32_t format) {
    LitPixels lit{0, 0, 0, width, height};
    for (int32_t row = 0; row < height; ++row) {
        for (int32_t column = 0; column < width; ++column, bytes += bytes_per_pixel(format)) {
            if (*bytes == 0) continue;
            ++lit.lit;
            if (column == width - 1) ++lit.last_column;
            if (row == height - 1) ++lit.top_row;  // the bottom row is the first
        }
    }
    return lit;
}

// The largest counts of all pictures of the image over time; of a sequence at most kMaxFiles are read.
LitPixels lit_pixels(const BuiltScene& built, const std::string& name) {
    std::vector<std::filesystem::path> files;
    if (const auto found = built.description.images.find(name); found != built.description.images.end()) {
        const std::vector<std::filesystem::path>& all = found->second.files;
        const size_t count = std::min(all.size(), kMaxFiles);
        for (size_t i = 0; i < count; ++i) files.push_back(all[count == 1 ? 0 : i * (all.size() - 1) / (count - 1)]);
    }
    for (const TimelineEntry& entry : built.description.timeline)
        if (entry.image == name) files.push_back(entry.file);
    const Image* image = find_image(*built.stage, find_image_by_name(*built.stage, name));
    LitPixels most;
    if (files.empty() && image != nullptr && !image->pixels.empty())
        most = lit_pixels(image->pixels.data(), image->width, image->height, image->format);
    for (const std::filesystem::path& file : files) {
        const Result<Picture> picture = read_picture(file);
        if (!picture) continue;
        const LitPixels lit = lit_pixels(picture->bytes.data(), picture->width, picture->height, picture->format);
        most = {std::max(most.lit, lit.lit), std::max(most.last_column, lit.last_column),
                std::max(most.top_row, lit.top_row), lit.width, lit.height};
    }
    return most;
}

void lint_mask(const LintedInstance& linted, const ParameterMoment& moment, const ParameterNotes& notes,
               std::vector<std::string>& lines) {
    const std::string name = text_of(value_of(linted, moment, notes.name));
    const std::string start = fmt::format("{}: the mask '{}'", place_of(linted, moment, notes.name), name);
    const Extent extent = extent_of(linted, moment, notes);
    if (extent.width < kMinMaskExtent || extent.height < kMinMaskExtent) {
        lines.push_back(fmt::format("{} covers {:g} x {:g} units: below {:g} nothing is born; set {} and {}", start,
                                    extent.width, extent.height, kMinMaskExtent, extent.parameters[0],
                                    extent.parameters[1]));
        return;
    }
    const LitPixels lit = lit_pixels(linted.built, name);
    if (lit.lit == 0) {
        lines.push_back(start +
                        " is black everywhere in its first channel: nothing is born; brighten the place of birth");
        return;
    }
    if (lit.last_column > 0)
        lines.push_back(
            fmt::format("{} is lit in {} of {} pixels of its last column: particles are also born up to {:g} "
                        "units to the right of it; leave that column black",
                        start, lit.last_column, lit.height, extent.width));
    if (lit.top_row > 0)
        lines.push_back(
            fmt::format("{} is lit in {} of {} pixels of its top row: particles are also born up to {:g} "
                        "units above it; leave that row black",
                        start, lit.top_row, lit.width, extent.height));
}

void lint_field(const LintedInstance& linted, const ParameterMoment& moment, const ParameterNotes& notes,
                std::vector<std::string>& lines) {
    const Extent extent = extent_of(linted, moment, notes);
    const bool narrow = extent.width < kNoExtent, flat = extent.height < kNoExtent;
    if (!narrow && !flat) return;
    lines.push_back(fmt::format("{}: the image '{}' covers {:g} x {:g} units: all particles read one {}; set {} and {}",
                                place_of(linted, moment, notes.name), text_of(value_of(linted, moment, notes.name)),
                                extent.width, extent.height,
                                narrow && flat ? "pixel"
                                : narrow       ? "column"
                                               : "row",
                                notes.covers[0][0], notes.covers[0][1]));
}

// True if a choice of a Radio parameter needs the image, which is then the place of births.
bool is_mask(const LintedInstance& linted, const ParameterNotes& image) {
    return std::any_of(linted.notes.parameters.begin(), linted.notes.parameters.end(),
                       [&](const ParameterNotes& notes) {
                           return find_parameter(linted.plugin, notes.name)->kind == ParameterKind::kRadio &&
                                  std::any_of(notes.needs.begin(), notes.needs.end(),
                                              [&](const auto& need) { return need.second == image.name; });
                       });
}

}  // namespace

void lint_images(const LintedInstance& linted, std::vector<std::string>& lines) {
    for (const ParameterMoment& moment : linted.moments) {
        if (moment.made.empty()) continue;
        for (const ParameterNotes& notes : linted.notes.parameters) {
            if (notes.covers.empty() || text_of(value_of(linted, moment, notes.name)).empty() ||
                !holds(linted, moment, notes.acts_when))
                continue;
            (is_mask(linted, notes) ? lint_mask : lint_field)(linted, moment, notes, lines);
        }
    }
}

}  // namespace stage
