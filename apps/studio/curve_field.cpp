#include "curve_field.h"

#include <fmt/format.h>
#include <imgui.h>
#include <imgui_stdlib.h>

#include <vector>

#include "apps/studio/widgets/curve_editor.h"
#include "apps/studio/widgets/gradient_editor.h"

namespace tovu {

namespace {

using widgets::CurvePoint;
using widgets::GradientStop;

constexpr float kHeight = 8;  // of the drawing, in lines of text

std::vector<CurvePoint> points_of(std::span<const double> numbers) {
    std::vector<CurvePoint> points;
    for (size_t i = 0; i + 1 < numbers.size(); i += 2) points.push_back({numbers[i], numbers[i + 1]});
    return points;
}

std::string text_of(const std::vector<CurvePoint>& points) {
    std::vector<double> numbers;
    for (const CurvePoint& point : points) numbers.insert(numbers.end(), {point.x, point.y});
    return stage::curve_text(numbers);
}

std::vector<GradientStop> stops_of(std::span<const double> numbers) {
    std::vector<GradientStop> stops;
    for (size_t i = 0; i + 3 < numbers.size(); i += 4) {
        GradientStop stop{numbers[i], {}};
        for (size_t k = 0; k < stop.color.size(); ++k) stop.color[k] = static_cast<float>(numbers[i + 1 + k]);
        stops.push_back(stop);
    }
    return stops;
}

std::string text_of(const std::vector<GradientStop>& stops) {
    std::vector<double> numbers;
    for (const GradientStop& stop : stops) {
        numbers.push_back(stop.x);
        // Converts through the shortest decimal form of the float, which is the form in the file.
        for (const float part : stop.color) numbers.push_back(std::stod(fmt::format("{}", part)));
    }
    return stage::curve_text(numbers);
}

std::optional<std::string> edit_points(const std::vector<double>& numbers, const CurveShown& shown, ImVec2 size) {
    const widgets::CurveLimits limits{shown.format.range[0], shown.format.range[1], shown.format.steps};
    std::vector<CurvePoint> points = points_of(numbers);
    if (!widgets::curve_editor("points", points, limits, points_of(shown.sampled), shown.histogram, size))
        return std::nullopt;
    return text_of(points);
}

std::optional<std::string> edit_stops(const std::vector<double>& numbers, const CurveShown& shown, ImVec2 size) {
    std::vector<GradientStop> stops = stops_of(numbers);
    if (!widgets::gradient_editor("stops", stops, shown.histogram, size)) return std::nullopt;
    return text_of(stops);
}

// Shows the mistake in an area as large as the drawing, so that nothing moves while the text is typed.
void show_mistake(const std::string& mistake, ImVec2 size) {
    ImGui::BeginChild("mistake", {size.x, size.y + 2 * ImGui::GetFrameHeightWithSpacing()});
    ImGui::TextWrapped("This is not a curve yet: %s.", mistake.c_str());
    ImGui::EndChild();
}

}  // namespace

std::optional<std::string> curve_field(const std::string& text, const CurveShown& shown, float width) {
    const bool is_gradient = shown.format.components == 3;
    const ImVec2 size(width, ImGui::GetTextLineHeight() * (is_gradient ? kHeight * 0.6f : kHeight));
    ImGui::BeginGroup();
    std::optional<std::string> edited;
    if (const auto numbers = stage::curve_points(shown.format, text); !numbers)
        show_mistake(numbers.error().message, size);
    else if (is_gradient)
        edited = edit_stops(*numbers, shown, size);
    else if (shown.format.components == 1)
        edited = edit_points(*numbers, shown, size);
    std::string typed = text;
    ImGui::SetNextItemWidth(width);
    if (ImGui::InputText("##text", &typed)) edited = typed;
    ImGui::EndGroup();
    return edited;
}

}  // namespace tovu
