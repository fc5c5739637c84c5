// Rules about drawing: the cost of quads, and faint layers in 8 bits.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "linted.h"

namespace stage {

namespace {

constexpr double kBudget = 100e6;      // pixels of quads per frame
constexpr double kFaintOpacity = 0.1;  // mean over life; fainter layers band visibly in 8 bits

// The mean opacity over life, by linear interpolation.
double mean_opacity(const std::vector<double>& points) {
    double sum = 0.0;
    for (size_t i = 2; i + 1 < points.size(); i += 2)
        sum += (points[i] - points[i - 2]) * (points[i + 1] + points[i - 1]) / 2.0;
    return sum;
}

// The largest product of the opacities of the container and its parents over time.
double most_opacity(const LintedInstance& linted) {
    const SceneDescription& scene = linted.built.description;
    double opacity = 1.0;
    for (auto one = static_cast<int32_t>(linted.container); one >= 0;) {
        const ContainerDescription& container = scene.containers[static_cast<size_t>(one)];
        float own = container.opacity;
        for (const Track& track : scene.tracks) {
            if (track.container != one || track.property != TrackProperty::kOpacity) continue;
            for (const TrackKey& key : track.keys) own = std::max(own, key.value[0]);
        }
        opacity *= static_cast<double>(own);
        one = container.parent;
    }
    return opacity;
}

// Pixels per unit at the container's distance from the camera.
double pixels_per_unit(const LintedInstance& linted) {
    constexpr double kHalfDegree = std::numbers::pi / 360.0;
    const Camera& camera = linted.built.stage->camera;
    const Matrix matrix = world_matrix(*linted.built.stage, linted.built.container_handles[linted.container]);
    const Vector3 view = view_direction(camera);
    const double distance =
        static_cast<double>((matrix[12] - camera.position.x) * view.x + (matrix[13] - camera.position.y) * view.y +
                            (matrix[14] - camera.position.z) * view.z);
    const double height = 2.0 * std::tan(static_cast<double>(camera.field_of_view_degrees) * kHalfDegree);
    return linted.built.description.size[1] / (std::max(distance, kNearDistance) * height);
}

// Mean area of a quad over its life, in which both half sizes change linearly.
double mean_area(const std::vector<double>& widths, const std::vector<double>& heights) {
    const double width_change = widths.back() - widths[0], height_change = heights.back() - heights[0];
    return 4.0 * (widths[0] * heights[0] + (widths[0] * height_change + heights[0] * width_change) / 2.0 +
                  width_change * height_change / 3.0);
}

// The largest number of quads of an instance, and their pixels.
struct Drawn {
    double pixels = 0.0;
    double quads = 0.0;
};

Drawn drawn_by(const LintedInstance& linted) {
    if (with_role(linted, "half_width") == nullptr || with_role(linted, "half_height") == nullptr) return {};
    const SceneDescription& scene = linted.built.description;
    const Vector3 scale =
        scaling_of(world_matrix(*linted.built.stage, linted.built.container_handles[linted.container]));
    const double picture = static_cast<double>(scene.size[0]) * scene.size[1];
    const double per_unit = pixels_per_unit(linted);
    Drawn most{0.0, most_alive(linted)};
    for (const ParameterMoment& moment : linted.moments) {
        const double area =
            mean_area(numbers_of(linted, moment, "half_width"), numbers_of(linted, moment, "half_height")) *
            std::fabs(static_cast<double>(scale.x * scale.y)) * per_unit * per_unit;
        most.pixels = std::max(most.pixels, most.quads * std::min(area, picture));
    }
    return most;
}

}  // namespace

void lint_bits(const LintedInstance& linted, std::vector<std::string>& lines) {
    const ParameterInfo* curve = with_role(linted, "opacity");
    if (linted.built.description.bits != 8 || curve == nullptr) return;
    const CurveFormat& format = *find_notes(linted.notes, curve->name)->curve;
    const double opacity = most_opacity(linted);
    for (const ParameterMoment& moment : linted.moments) {
        const Result<std::vector<double>> points = curve_points(format, text_of(value_of(linted, moment, curve->name)));
        if (!points) continue;
        const double mean = mean_opacity(*points) * opacity;
        if (mean >= kFaintOpacity) continue;
        lines.push_back(
            fmt::format("{}: the layers of '{}' have an opacity of {:.2g} on average, {:.0f} of 255 steps: "
                        "with bits = 8 they band and fade; set bits = 16",
                        place_of(linted, moment, curve->name), description_of(linted).name, mean, mean * 255.0));
        return;
    }
}

void lint_pixels(const std::vector<LintedInstance>& instances, std::vector<std::string>& lines) {
    Drawn all, most;
    const ContainerDescription* costly = nullptr;
    for (const LintedInstance& linted : instances) {
        const Drawn drawn = drawn_by(linted);
        all.pixels += drawn.pixels;
        if (drawn.pixels <= most.pixels) continue;
        most = drawn;
        costly = &description_of(linted);
    }
    if (all.pixels <= kBudget) return;
    lines.push_back(fmt::format(
        "{}: the scene draws about {:.0f} megapixels a frame, the budget is {:.0f}; '{}' draws {:.0f} of them, {:.0f} "
        "quads of {:.0f} pixels; take fewer or smaller particles with more opacity",
        costly->place, all.pixels / 1e6, kBudget / 1e6, costly->name, most.pixels / 1e6, most.quads,
        most.pixels / most.quads));
}

}  // namespace stage
