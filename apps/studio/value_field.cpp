#include "value_field.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "curve_field.h"
#include "name_field.h"
#include "theme.h"

namespace tovu {

namespace {

using stage::ParameterInfo;
using stage::ParameterKind;
using Edited = std::optional<stage::ParameterValue>;

struct Field {
    const PanelFrame& frame;
    const ContainerFacts& container;
    const ParameterState& parameter;
    float width;

    const ParameterInfo& info() const { return *parameter.info; }
    std::string target() const { return "parameter." + info().name; }
    // The value, or an empty value if it has another type.
    template <class Value>
    Value value() const {
        const auto* held = std::get_if<Value>(&parameter.value);
        return held != nullptr ? *held : Value{};
    }
};

// A hundredth of the value, and in a limited range at least a thousandth of the range, so that a drag reaches both
// small and large values.
float drag_speed(const ParameterInfo& info, double value) {
    const double range = info.maximum - info.minimum;
    const double least = range <= 1000.0 ? range / 2000.0 : 0.05;
    const double speed = std::max(std::abs(value) * 0.01, least);
    return static_cast<float>(info.kind == ParameterKind::kInt ? std::max(speed, 0.1) : speed);
}

// A number's format, with its unit if it fits. Doubles percent signs of the unit, since the text is a printf format.
std::string format_of(const Field& field, const std::string& number, double value) {
    std::string unit = short_unit(field.parameter);
    const std::string shown = fmt::format("{:.4g}", value) + unit;
    if (ImGui::CalcTextSize(shown.c_str()).x > field.width - 2 * ImGui::GetStyle().FramePadding.x) return number;
    if (const size_t percent = unit.find('%'); percent != std::string::npos) unit.insert(percent, "%");
    return number + unit;
}

Edited edit_int(const Field& field) {
    const ParameterInfo& info = field.info();
    int value = field.value<int>();
    if (!ImGui::DragInt("##value", &value, drag_speed(info, value), static_cast<int>(info.minimum),
                        static_cast<int>(info.maximum), format_of(field, "%d", value).c_str(),
                        ImGuiSliderFlags_AlwaysClamp))
        return {};
    return value;
}

Edited edit_float(const Field& field) {
    const ParameterInfo& info = field.info();
    auto value = static_cast<float>(field.value<double>());
    if (!ImGui::DragFloat("##value", &value, drag_speed(info, value), static_cast<float>(info.minimum),
                          static_cast<float>(info.maximum), format_of(field, "%.4g", value).c_str(),
                          ImGuiSliderFlags_AlwaysClamp | ImGuiSliderFlags_NoRoundToFormat))
        return {};
    return static_cast<double>(value);
}

Edited edit_bool(const Field& field) {
    bool value = field.value<bool>();
    if (!ImGui::Checkbox("##value", &value)) return {};
    return value;
}

Edited edit_radio(const Field& field) {
    return choice_buttons(field.frame.targets, field.target(), field.value<std::string>(), field.info().choices,
                          field.width);
}

// The histogram of the ages of live particles relative to their life, 0 to 1.
std::array<float, kLifeBins> spread_over_life(const Studio& studio, const std::string& container) {
    std::array<float, kLifeBins> heights{};
    if (!studio.report.drawn) return heights;
    for (const ParticleCounts& counts : studio.report.drawn->particles) {
        if (counts.container != container) continue;
        const int32_t most = std::max(1, *std::max_element(counts.by_life.begin(), counts.by_life.end()));
        for (size_t i = 0; i < kLifeBins; ++i)
            heights[i] = static_cast<float>(counts.by_life[i]) / static_cast<float>(most);
    }
    return heights;
}

Edited edit_curve(const Field& field) {
    const auto sampled = field.container.curves.find(field.info().name);
    const std::array<float, kLifeBins> spread = spread_over_life(field.frame.studio, field.container.name);
    CurveShown shown{*field.parameter.notes->curve, {}, spread};
    if (sampled != field.container.curves.end()) shown.sampled = sampled->second;
    return curve_field(field.value<std::string>(), shown, field.width);
}

Edited edit_text(const Field& field) {
    auto text = field.value<std::string>();
    if (ImGui::InputText("##value", &text, ImGuiInputTextFlags_EnterReturnsTrue) || ImGui::IsItemDeactivatedAfterEdit())
        return text;
    return {};
}

Edited edit_name(const Field& field) {
    const stage::SceneDescription& scene = *field.frame.studio.scene;
    return name_field(field.frame.targets, field.target(), field.value<std::string>(), field.width, [&] {
        if (field.info().kind == ParameterKind::kImage) return images_to_choose(scene);
        std::vector<NameChoice> containers;
        for (const stage::ContainerDescription& container : scene.containers)
            containers.push_back({"", container.name});
        return containers;
    });
}

}  // namespace

bool is_curve(const ParameterState& parameter) {
    return parameter.notes != nullptr && parameter.notes->curve;
}

std::optional<std::string> choice_buttons(Targets& targets, const std::string& target, const std::string& chosen,
                                          const std::vector<std::string>& choices, float width) {
    std::optional<std::string> clicked;
    const float right = ImGui::GetCursorPosX() + width;
    for (const std::string& choice : choices) {
        const bool is_chosen = choice == chosen;
        const float button = ImGui::CalcTextSize(choice.c_str()).x + 2 * ImGui::GetStyle().FramePadding.x;
        if (&choice != &choices.front()) {
            ImGui::SameLine(0, ImGui::GetStyle().ItemInnerSpacing.x / 2);
            if (ImGui::GetCursorPosX() + button > right) ImGui::NewLine();
        }
        if (is_chosen) ImGui::PushStyleColor(ImGuiCol_Button, kAccentSoft);
        if (ImGui::Button(choice.c_str())) clicked = choice;
        if (is_chosen) ImGui::PopStyleColor();
        mark(targets, target + "." + choice);
    }
    return clicked;
}

Edited value_field(const PanelFrame& frame, const ContainerFacts& container, const ParameterState& parameter,
                   float width) {
    const Field field{frame, container, parameter, width};
    ImGui::SetNextItemWidth(width);
    if (is_curve(parameter)) return edit_curve(field);
    switch (parameter.info->kind) {
        case ParameterKind::kInt:
            return edit_int(field);
        case ParameterKind::kFloat:
            return edit_float(field);
        case ParameterKind::kBool:
            return edit_bool(field);
        case ParameterKind::kRadio:
            return edit_radio(field);
        case ParameterKind::kString:
            return edit_text(field);
        case ParameterKind::kContainer:
        case ParameterKind::kImage:
            return edit_name(field);
    }
    return {};
}

}  // namespace tovu
