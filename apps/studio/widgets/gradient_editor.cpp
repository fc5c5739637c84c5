#include "gradient_editor.h"

#include <algorithm>

#include "points.h"
#include "tip.h"

namespace widgets {

namespace {

constexpr size_t kMinStops = 2;

struct Gradient {
    std::vector<GradientStop>& stops;
    const Canvas& canvas;
};

float place_of(const Canvas& canvas, double x) {
    return canvas.low.x + static_cast<float>(x) * canvas.size.x;
}

// The drawing has the histogram at the top, the gradient in the middle and the handles at the bottom.
float handle_height() {
    return ImGui::GetFontSize() * 0.8f;
}
float bar_top(const Canvas& canvas) {
    return canvas.low.y + canvas.size.y * 0.4f;
}
float bar_bottom(const Canvas& canvas) {
    return canvas.low.y + canvas.size.y - handle_height();
}

std::array<float, 3> mixed(const GradientStop& a, const GradientStop& b, double x) {
    const auto share = static_cast<float>(b.x > a.x ? (x - a.x) / (b.x - a.x) : 0.0);
    std::array<float, 3> color{};
    for (size_t i = 0; i < color.size(); ++i) color[i] = a.color[i] + (b.color[i] - a.color[i]) * share;
    return color;
}

void add(const Gradient& gradient, double x) {
    std::vector<GradientStop>& stops = gradient.stops;
    const auto after = std::upper_bound(stops.begin(), stops.end(), x,
                                        [](double at, const GradientStop& stop) { return at < stop.x; });
    GradientStop stop{x, {}};
    if (after == stops.begin())
        stop.color = stops.front().color;
    else if (after == stops.end())
        stop.color = stops.back().color;
    else
        stop.color = mixed(*(after - 1), *after, x);
    const auto index = static_cast<int>(after - stops.begin());
    stops.insert(after, stop);
    take_added_point(index);
}

void move(const Gradient& gradient, size_t index, double x) {
    std::vector<GradientStop>& stops = gradient.stops;
    const double low = index > 0 ? stops[index - 1].x : 0.0;
    const double high = index + 1 < stops.size() ? stops[index + 1].x : 1.0;
    stops[index].x = std::clamp(x, low, high);
}

double x_at(const Canvas& canvas, ImVec2 place) {
    return std::clamp(rounded((place.x - canvas.low.x) / canvas.size.x), 0.0, 1.0);
}

bool apply(const Gradient& gradient, const PointAction& action) {
    std::vector<GradientStop>& stops = gradient.stops;
    const auto index = static_cast<size_t>(action.index);
    switch (action.event) {
        case PointEvent::kNone:
            return false;
        case PointEvent::kMove:
            move(gradient, index, x_at(gradient.canvas, *action.place));
            return true;
        case PointEvent::kAdd: {
            const size_t first = index + 1 < stops.size() ? index : index - 1;
            const double middle = rounded((stops[first].x + stops[first + 1].x) / 2);
            add(gradient, action.place ? x_at(gradient.canvas, *action.place) : middle);
            return true;
        }
        case PointEvent::kRemove:
            if (stops.size() <= kMinStops || index >= stops.size()) return false;
            stops.erase(stops.begin() + action.index);
            return true;
    }
    return false;
}

ImU32 packed(const std::array<float, 3>& color) {
    return ImGui::ColorConvertFloat4ToU32({color[0], color[1], color[2], 1.0f});
}

void draw_bar(const Gradient& gradient) {
    const Canvas& canvas = gradient.canvas;
    ImDrawList& draw = *ImGui::GetWindowDrawList();
    const float top = bar_top(canvas), bottom = bar_bottom(canvas);
    draw.AddRectFilled({canvas.low.x, top}, {canvas.low.x + canvas.size.x, bottom}, IM_COL32_BLACK);
    for (size_t i = 0; i + 1 < gradient.stops.size(); ++i) {
        const ImU32 left = packed(gradient.stops[i].color), right = packed(gradient.stops[i + 1].color);
        draw.AddRectFilledMultiColor({place_of(canvas, gradient.stops[i].x), top},
                                     {place_of(canvas, gradient.stops[i + 1].x), bottom}, left, right, right, left);
    }
}

void draw_handles(const Gradient& gradient) {
    const Canvas& canvas = gradient.canvas;
    ImDrawList& draw = *ImGui::GetWindowDrawList();
    const int chosen = chosen_point(static_cast<int>(gradient.stops.size()));
    const float height = handle_height(), top = bar_bottom(canvas);
    for (size_t i = 0; i < gradient.stops.size(); ++i) {
        const float x = place_of(canvas, gradient.stops[i].x);
        const bool is_chosen = static_cast<int>(i) == chosen;
        const ImU32 edge = ImGui::GetColorU32(is_chosen ? ImGuiCol_SliderGrabActive : ImGuiCol_Text);
        const ImVec2 low(x - height * 0.4f, top + height * 0.3f), high(x + height * 0.4f, top + height);
        draw.AddTriangleFilled({x, top}, {low.x, low.y}, {high.x, low.y}, edge);
        draw.AddRectFilled(low, high, packed(gradient.stops[i].color));
        draw.AddRect(low, high, edge, 0, 0, is_chosen ? 2.0f : 1.0f);
    }
}

// A wide button in the stop's colour, which opens a colour picker.
bool color_field(GradientStop& stop, float width) {
    const ImVec4 color(stop.color[0], stop.color[1], stop.color[2], 1.0f);
    if (ImGui::ColorButton("colour", color, ImGuiColorEditFlags_NoTooltip, {width, ImGui::GetFrameHeight()}))
        ImGui::OpenPopup("picker");
    tip("Pick a colour");
    if (!ImGui::BeginPopup("picker")) return false;
    const bool changed = ImGui::ColorPicker3("##picker", stop.color.data(), ImGuiColorEditFlags_Float);
    ImGui::EndPopup();
    if (changed)
        for (float& part : stop.color) part = static_cast<float>(rounded(part));
    return changed;
}

// The fields for the chosen stop. right: the right edge of the editor.
bool stop_fields(const Gradient& gradient, float right) {
    const auto chosen = static_cast<size_t>(chosen_point(static_cast<int>(gradient.stops.size())));
    GradientStop& stop = gradient.stops[chosen];
    double x = stop.x;
    bool changed = number_field("Position", x, 0.0, 1.0);
    if (changed) move(gradient, chosen, x);
    ImGui::SameLine();
    field_label("Colour");
    changed |= color_field(stop, std::max(right - ImGui::GetCursorScreenPos().x, ImGui::GetFrameHeight()));
    return changed;
}

}  // namespace

bool gradient_editor(const char* id, std::vector<GradientStop>& stops, std::span<const float> histogram,
                     const ImVec2& size) {
    if (stops.size() < kMinStops) return false;
    ImGui::PushID(id);
    ImGui::BeginGroup();
    const float right = ImGui::GetCursorScreenPos().x + size.x;
    const Canvas canvas = begin_canvas(size);
    const Gradient gradient{stops, canvas};
    std::vector<ImVec2> places;
    for (const GradientStop& stop : stops)
        places.push_back({place_of(canvas, stop.x), bar_bottom(canvas) + handle_height() / 2});
    bool changed = apply(gradient, point_action(canvas, places));
    Canvas above = canvas;
    above.size.y = bar_top(canvas) - canvas.low.y;
    draw_histogram(above, histogram);
    draw_bar(gradient);
    draw_handles(gradient);
    changed |= apply(gradient, point_buttons(static_cast<int>(stops.size()), stops.size() > kMinStops));
    changed |= stop_fields(gradient, right);
    ImGui::EndGroup();
    ImGui::PopID();
    return changed;
}

}  // namespace widgets
