#include "curve_editor.h"

#include <algorithm>

#include "points.h"

namespace widgets {

namespace {

constexpr double kLeastStep = 0.001;  // smallest distance in x if two points must not have the same x

struct Curve {
    std::vector<CurvePoint>& points;
    const CurveLimits& limits;
    const Canvas& canvas;
};

double span_of(const CurveLimits& limits) {
    return std::max(limits.high - limits.low, kLeastStep);
}

ImVec2 place_of(const Curve& curve, const CurvePoint& point) {
    const double x = (point.x - curve.limits.low) / span_of(curve.limits);
    const double y = (point.y - curve.limits.low) / span_of(curve.limits);
    return {curve.canvas.low.x + static_cast<float>(x) * curve.canvas.size.x,
            curve.canvas.low.y + static_cast<float>(1.0 - y) * curve.canvas.size.y};
}

CurvePoint point_at(const Curve& curve, ImVec2 place) {
    const double x = (place.x - curve.canvas.low.x) / curve.canvas.size.x;
    const double y = 1.0 - (place.y - curve.canvas.low.y) / curve.canvas.size.y;
    return {rounded(curve.limits.low + x * span_of(curve.limits)),
            rounded(curve.limits.low + y * span_of(curve.limits))};
}

// The range of a point's x between its neighbours.
struct Room {
    double low, high;
};

Room room_of(const std::vector<CurvePoint>& points, const CurveLimits& limits, size_t index) {
    const double step = limits.steps ? 0.0 : kLeastStep;
    Room room{limits.low, limits.high};
    if (index > 0) room.low = points[index - 1].x + step;
    if (index + 1 < points.size()) room.high = points[index + 1].x - step;
    return {room.low, std::max(room.low, room.high)};
}

void hold(const Curve& curve, size_t index) {
    CurvePoint& point = curve.points[index];
    const Room room = room_of(curve.points, curve.limits, index);
    point.x = std::clamp(point.x, room.low, room.high);
    point.y = std::clamp(point.y, curve.limits.low, curve.limits.high);
}

// The point half-way to the next point, or for the last point, to the previous one.
CurvePoint between(const std::vector<CurvePoint>& points, size_t index) {
    const size_t first = index + 1 < points.size() ? index : index - 1;
    const CurvePoint &a = points[first], &b = points[first + 1];
    return {rounded((a.x + b.x) / 2), rounded((a.y + b.y) / 2)};
}

void add(const Curve& curve, const CurvePoint& point) {
    const auto after = std::upper_bound(curve.points.begin(), curve.points.end(), point.x,
                                        [](double x, const CurvePoint& other) { return x < other.x; });
    const auto index = static_cast<size_t>(after - curve.points.begin());
    const bool has_room = curve.limits.steps || ((index == 0 || point.x - curve.points[index - 1].x >= kLeastStep) &&
                                                 (after == curve.points.end() || after->x - point.x >= kLeastStep));
    if (!has_room) return;
    curve.points.insert(after, point);
    hold(curve, index);
    take_added_point(static_cast<int>(index));
}

bool apply(const Curve& curve, const PointAction& action) {
    const std::vector<CurvePoint>& points = curve.points;
    const auto index = static_cast<size_t>(action.index);
    switch (action.event) {
        case PointEvent::kNone:
            return false;
        case PointEvent::kMove:
            curve.points[index] = point_at(curve, *action.place);
            hold(curve, index);
            return true;
        case PointEvent::kAdd:
            add(curve, action.place ? point_at(curve, *action.place) : between(points, index));
            return true;
        case PointEvent::kRemove:
            if (points.size() <= curve.limits.min_points || index >= points.size()) return false;
            curve.points.erase(curve.points.begin() + action.index);
            return true;
    }
    return false;
}

void draw_grid(const Canvas& canvas) {
    ImDrawList& draw = *ImGui::GetWindowDrawList();
    const ImU32 color = ImGui::GetColorU32(ImGuiCol_Border, 0.6f);
    for (int i = 1; i < 4; ++i) {
        const float x = canvas.low.x + canvas.size.x * static_cast<float>(i) / 4;
        const float y = canvas.low.y + canvas.size.y * static_cast<float>(i) / 4;
        draw.AddLine({x, canvas.low.y}, {x, canvas.low.y + canvas.size.y}, color);
        draw.AddLine({canvas.low.x, y}, {canvas.low.x + canvas.size.x, y}, color);
    }
}

void draw_curve(const Curve& curve, std::span<const CurvePoint> sampled) {
    std::vector<ImVec2> line;
    for (const CurvePoint& point : sampled) line.push_back(place_of(curve, point));
    if (line.empty())
        for (const CurvePoint& point : curve.points) line.push_back(place_of(curve, point));
    ImDrawList& draw = *ImGui::GetWindowDrawList();
    const float unit = ImGui::GetFontSize() / 12;
    draw.AddPolyline(line.data(), static_cast<int>(line.size()), ImGui::GetColorU32(ImGuiCol_PlotLines), 0,
                     1.5f * unit);
    const int chosen = chosen_point(static_cast<int>(curve.points.size()));
    for (size_t i = 0; i < curve.points.size(); ++i) {
        const ImVec2 place = place_of(curve, curve.points[i]);
        const bool is_chosen = static_cast<int>(i) == chosen;
        draw.AddCircleFilled(place, (is_chosen ? 5.5f : 4.5f) * unit, ImGui::GetColorU32(ImGuiCol_WindowBg));
        draw.AddCircleFilled(place, (is_chosen ? 4.5f : 3.5f) * unit,
                             ImGui::GetColorU32(is_chosen ? ImGuiCol_SliderGrabActive : ImGuiCol_Text));
    }
}

bool number_fields(const Curve& curve) {
    const auto chosen = static_cast<size_t>(chosen_point(static_cast<int>(curve.points.size())));
    const Room room = room_of(curve.points, curve.limits, chosen);
    bool changed = number_field("Position", curve.points[chosen].x, room.low, room.high);
    ImGui::SameLine();
    changed |= number_field("Value", curve.points[chosen].y, curve.limits.low, curve.limits.high);
    return changed;
}

}  // namespace

bool curve_editor(const char* id, std::vector<CurvePoint>& points, const CurveLimits& limits,
                  std::span<const CurvePoint> sampled, std::span<const float> histogram, const ImVec2& size) {
    if (points.empty()) return false;
    ImGui::PushID(id);
    ImGui::BeginGroup();
    const Canvas canvas = begin_canvas(size);
    const Curve curve{points, limits, canvas};
    std::vector<ImVec2> places;
    for (const CurvePoint& point : points) places.push_back(place_of(curve, point));
    bool changed = apply(curve, point_action(canvas, places));
    draw_histogram(canvas, histogram);
    draw_grid(canvas);
    draw_curve(curve, sampled);
    changed |= apply(curve, point_buttons(static_cast<int>(points.size()), points.size() > limits.min_points));
    changed |= number_fields(curve);
    ImGui::EndGroup();
    ImGui::PopID();
    return changed;
}

}  // namespace widgets
