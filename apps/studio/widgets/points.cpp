#include "points.h"

#include <algorithm>
#include <cmath>

#include "tip.h"

namespace widgets {

namespace {

constexpr int kNone = -1;

int stored(const char* name, int initial) {
    return ImGui::GetStateStorage()->GetInt(ImGui::GetID(name), initial);
}
void store(const char* name, int value) {
    ImGui::GetStateStorage()->SetInt(ImGui::GetID(name), value);
}
float stored_distance(const char* name) {
    return ImGui::GetStateStorage()->GetFloat(ImGui::GetID(name));
}
void store_distance(const char* name, float value) {
    ImGui::GetStateStorage()->SetFloat(ImGui::GetID(name), value);
}

int nearest_point(std::span<const ImVec2> places) {
    const ImVec2 mouse = ImGui::GetMousePos();
    int nearest = kNone;
    float least = ImGui::GetFontSize() * 0.7f;
    for (size_t i = 0; i < places.size(); ++i) {
        const float distance = std::hypot(places[i].x - mouse.x, places[i].y - mouse.y);
        const bool is_chosen = static_cast<int>(i) == stored("chosen", 0);
        if (distance > least || (distance == least && !is_chosen)) continue;
        least = distance;
        nearest = static_cast<int>(i);
    }
    return nearest;
}

// Stores the distance of a point from the mouse at the press, which stays constant during the drag.
void grab(int index, ImVec2 place) {
    const ImVec2 mouse = ImGui::GetMousePos();
    store("chosen", index);
    store("dragged", index);
    store_distance("from mouse x", place.x - mouse.x);
    store_distance("from mouse y", place.y - mouse.y);
}

}  // namespace

Canvas begin_canvas(const ImVec2& size) {
    const ImVec2 low = ImGui::GetCursorScreenPos();
    const ImVec2 high(low.x + size.x, low.y + size.y);
    const float margin = std::floor(ImGui::GetFontSize() / 2);
    ImGui::InvisibleButton("canvas", size, ImGuiButtonFlags_MouseButtonLeft | ImGuiButtonFlags_MouseButtonRight);
    Canvas canvas{{low.x + margin, low.y + margin}, {size.x - 2 * margin, size.y - 2 * margin}};
    canvas.hovered = ImGui::IsItemHovered();
    canvas.focused = ImGui::IsItemFocused();
    canvas.active = ImGui::IsItemActive();
    ImGui::GetWindowDrawList()->AddRectFilled(low, high, ImGui::GetColorU32(ImGuiCol_FrameBg),
                                              ImGui::GetStyle().FrameRounding);
    return canvas;
}

void draw_histogram(const Canvas& canvas, std::span<const float> histogram) {
    if (histogram.empty()) return;
    const float highest = *std::max_element(histogram.begin(), histogram.end());
    if (highest <= 0.0f) return;
    const float width = canvas.size.x / static_cast<float>(histogram.size());
    const float bottom = canvas.low.y + canvas.size.y;
    for (size_t i = 0; i < histogram.size(); ++i) {
        const float left = canvas.low.x + width * static_cast<float>(i);
        const float height = canvas.size.y * histogram[i] / highest;
        ImGui::GetWindowDrawList()->AddRectFilled({left, bottom - height}, {left + width - 1, bottom},
                                                  ImGui::GetColorU32(ImGuiCol_PlotHistogram, 0.35f));
    }
}

PointAction point_action(const Canvas& canvas, std::span<const ImVec2> places) {
    if (!canvas.active) store("dragged", kNone);
    const ImVec2 mouse = ImGui::GetMousePos();
    const int near = canvas.hovered ? nearest_point(places) : kNone;
    if (near != kNone && ImGui::IsMouseClicked(ImGuiMouseButton_Left)) {
        grab(near, places[static_cast<size_t>(near)]);
        return {};
    }
    if (near != kNone && ImGui::IsMouseClicked(ImGuiMouseButton_Right)) return {PointEvent::kRemove, near, {}};
    if (canvas.hovered && near == kNone && ImGui::IsMouseDoubleClicked(ImGuiMouseButton_Left))
        return {PointEvent::kAdd, 0, mouse};
    const int dragged = stored("dragged", kNone);
    const ImVec2 moved = ImGui::GetIO().MouseDelta;
    if (dragged != kNone && dragged < static_cast<int>(places.size()) && (moved.x != 0.0f || moved.y != 0.0f))
        return {PointEvent::kMove, dragged,
                ImVec2(mouse.x + stored_distance("from mouse x"), mouse.y + stored_distance("from mouse y"))};
    const bool has_focus = canvas.hovered || canvas.focused;
    if (has_focus && !ImGui::GetIO().WantTextInput && ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Delete), false))
        return {PointEvent::kRemove, chosen_point(static_cast<int>(places.size())), {}};
    return {};
}

int chosen_point(int count) {
    return std::clamp(stored("chosen", 0), 0, std::max(count - 1, 0));
}

void take_added_point(int index) {
    grab(index, ImGui::GetMousePos());
    if (!ImGui::IsMouseDown(ImGuiMouseButton_Left)) store("dragged", kNone);
}

PointAction point_buttons(int count, bool can_remove) {
    const float gap = ImGui::GetStyle().ItemInnerSpacing.x;
    const int chosen = chosen_point(count);
    PointAction action;
    if (ImGui::ArrowButton("previous", ImGuiDir_Left)) store("chosen", chosen - 1);
    ImGui::SameLine(0, gap);
    ImGui::AlignTextToFramePadding();
    ImGui::Text("%d of %d", chosen + 1, count);
    ImGui::SameLine(0, gap);
    if (ImGui::ArrowButton("next", ImGuiDir_Right)) store("chosen", chosen + 1);
    ImGui::SameLine();
    if (ImGui::Button("Add")) action = {PointEvent::kAdd, chosen, {}};
    tip("Or double-click in the drawing");
    ImGui::SameLine(0, gap);
    ImGui::BeginDisabled(!can_remove);
    if (ImGui::Button("Remove")) action = {PointEvent::kRemove, chosen, {}};
    tip("Or right-click the point, or press Delete");
    ImGui::EndDisabled();
    return action;
}

void field_label(const char* label) {
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted(label);
    ImGui::SameLine(0, ImGui::GetStyle().ItemInnerSpacing.x);
}

bool number_field(const char* label, double& value, double low, double high) {
    field_label(label);
    double typed = value;
    const auto speed = static_cast<float>((high - low) / 1000.0);
    ImGui::SetNextItemWidth(ImGui::GetFontSize() * 4);
    ImGui::PushID(label);
    const bool edited = ImGui::DragScalar("##number", ImGuiDataType_Double, &typed, std::max(speed, 0.001f), &low,
                                          &high, "%.3f", ImGuiSliderFlags_AlwaysClamp);
    ImGui::PopID();
    if (!edited) return false;
    typed = std::clamp(typed, low, high);
    const bool changed = typed != value;
    value = typed;
    return changed;
}

double rounded(double value) {
    return std::round(value * 1000.0) / 1000.0;
}

}  // namespace widgets
