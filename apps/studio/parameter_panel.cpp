// The parameters of the selected container, whatever plug-in it carries.
#include <algorithm>
#include <cmath>
#include <utility>

#include "curve_field.h"
#include "panels.h"
#include "stage/scenefile/built_in_images.h"
#include "theme.h"

namespace tovu {

namespace {

using stage::ParameterInfo;
using stage::ParameterKind;

struct Row {
    PanelFrame& frame;
    const ContainerFacts& container;
    const ParameterState& parameter;
    std::string label;  // of the step of undo
};

bool is_on(const Row& row, const std::string& parameter) {
    for (const ParameterStates& group : row.frame.memory.states)
        for (const ParameterState& state : group.parameters)
            if (state.info->name == parameter) return state.value == stage::ParameterValue(true);
    return false;
}

// What a lock that is on keeps alike with this parameter.
std::vector<std::string> bound_to(const Row& row) {
    std::vector<std::string> bound;
    const std::string& name = row.parameter.info->name;
    for (const stage::ParameterNotes& lock : row.container.noted->notes.parameters)
        for (const stage::ParameterPair& pair : lock.binds)
            if ((pair[0] == name || pair[1] == name) && is_on(row, lock.name))
                bound.push_back(pair[0] == name ? pair[1] : pair[0]);
    return bound;
}

void set(const Row& row, const stage::ParameterValue& value) {
    row.frame.commands.push_back(SetParameter{row.container.name, row.parameter.info->name, value, row.label});
    for (const std::string& bound : bound_to(row))
        row.frame.commands.push_back(SetParameter{row.container.name, bound, value, row.label});
}

// A hundredth of the value, at least a thousandth of a range that is not huge: a drag across the panel reaches far
// without missing small values.
float drag_speed(const ParameterInfo& info, double value) {
    const double range = info.maximum - info.minimum;
    const double least = range <= 1000.0 ? range / 2000.0 : 0.05;
    const double speed = std::max(std::abs(value) * 0.01, least);
    return static_cast<float>(info.kind == ParameterKind::kInt ? std::max(speed, 0.1) : speed);
}

void edit_int(const Row& row) {
    const ParameterInfo& info = *row.parameter.info;
    const auto* held = std::get_if<int>(&row.parameter.value);
    int value = held != nullptr ? *held : 0;
    const std::string format = "%d" + short_unit(row.parameter);
    if (ImGui::DragInt("##value", &value, drag_speed(info, value), static_cast<int>(info.minimum),
                       static_cast<int>(info.maximum), format.c_str(), ImGuiSliderFlags_AlwaysClamp))
        set(row, value);
}

// A percent sign of a unit is doubled, since the text is a format.
std::string float_format(const ParameterState& parameter) {
    std::string unit = short_unit(parameter);
    if (const size_t percent = unit.find('%'); percent != std::string::npos) unit.insert(percent, "%");
    return "%.4g" + unit;
}

void edit_float(const Row& row) {
    const ParameterInfo& info = *row.parameter.info;
    const auto* held = std::get_if<double>(&row.parameter.value);
    auto value = static_cast<float>(held != nullptr ? *held : 0.0);
    if (ImGui::DragFloat("##value", &value, drag_speed(info, value), static_cast<float>(info.minimum),
                         static_cast<float>(info.maximum), float_format(row.parameter).c_str(),
                         ImGuiSliderFlags_AlwaysClamp | ImGuiSliderFlags_NoRoundToFormat))
        set(row, static_cast<double>(value));
}

void edit_bool(const Row& row) {
    const auto* held = std::get_if<bool>(&row.parameter.value);
    bool value = held != nullptr && *held;
    if (ImGui::Checkbox("##value", &value)) set(row, value);
}

void edit_radio(const Row& row) {
    const auto* held = std::get_if<std::string>(&row.parameter.value);
    const float right = ImGui::GetContentRegionAvail().x + ImGui::GetCursorPosX();
    for (const std::string& choice : row.parameter.info->choices) {
        const bool is_on = held != nullptr && *held == choice;
        const float width = ImGui::CalcTextSize(choice.c_str()).x + 2 * ImGui::GetStyle().FramePadding.x;
        if (&choice != &row.parameter.info->choices.front()) {
            ImGui::SameLine(0, ImGui::GetStyle().ItemInnerSpacing.x / 2);
            if (ImGui::GetCursorPosX() + width > right) ImGui::NewLine();
        }
        if (is_on) ImGui::PushStyleColor(ImGuiCol_Button, kAccentSoft);
        if (ImGui::Button(choice.c_str())) set(row, choice);
        if (is_on) ImGui::PopStyleColor();
        mark(row.frame.targets, "parameter." + row.parameter.info->name + "." + choice);
    }
}

// How the live particles are spread over their life, from 0 to 1.
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

void edit_curve(const Row& row, float width) {
    const auto* held = std::get_if<std::string>(&row.parameter.value);
    const auto sampled = row.container.curves.find(row.parameter.info->name);
    const std::array<float, kLifeBins> spread = spread_over_life(row.frame.studio, row.container.name);
    CurveShown shown{*row.parameter.notes->curve, {}, spread};
    if (sampled != row.container.curves.end()) shown.sampled = sampled->second;
    if (const auto text = curve_field(held != nullptr ? *held : "", shown, width)) set(row, *text);
}

void edit_text(const Row& row) {
    const auto* held = std::get_if<std::string>(&row.parameter.value);
    std::string text = held != nullptr ? *held : "";
    if (ImGui::InputText("##value", &text, ImGuiInputTextFlags_EnterReturnsTrue) || ImGui::IsItemDeactivatedAfterEdit())
        set(row, text);
}

// A name that can be chosen, and where its image is from: "scene", or the folder of a built-in one.
struct Choice {
    std::string from;
    std::string name;

    auto operator<=>(const Choice&) const = default;
};

// Those of the scene first.
std::vector<Choice> names_to_choose(const Row& row) {
    std::vector<Choice> choices;
    const stage::SceneDescription& scene = *row.frame.studio.scene;
    if (row.parameter.info->kind == ParameterKind::kContainer) {
        for (const stage::ContainerDescription& container : scene.containers) choices.push_back({"", container.name});
        return choices;
    }
    std::vector<Choice> built_in;
    if (const auto& images = stage::built_in_images(); images)
        for (const auto& [name, image] : *images)
            built_in.push_back({image.files.front().parent_path().filename().string(), name});
    std::sort(built_in.begin(), built_in.end());
    const auto is_built_in = [&](const std::string& name) {
        return std::any_of(built_in.begin(), built_in.end(), [&](const Choice& choice) { return choice.name == name; });
    };
    for (const auto& [name, image] : scene.images)
        if (!is_built_in(name)) choices.push_back({"scene", name});
    choices.insert(choices.end(), built_in.begin(), built_in.end());
    return choices;
}

// Of a container or an image: any name can be typed, those of the scene and of built-in images can be chosen.
void choose_name(const Row& row) {
    const auto* held = std::get_if<std::string>(&row.parameter.value);
    std::string text = held != nullptr ? *held : "";
    const float arrow = ImGui::GetFrameHeight();
    ImGui::SetNextItemWidth(ImGui::CalcItemWidth() - arrow - ImGui::GetStyle().ItemInnerSpacing.x);
    if (ImGui::InputTextWithHint("##value", "none", &text, ImGuiInputTextFlags_EnterReturnsTrue) ||
        ImGui::IsItemDeactivatedAfterEdit())
        set(row, text);
    ImGui::SameLine(0, ImGui::GetStyle().ItemInnerSpacing.x);
    if (!ImGui::BeginCombo("##names", "", ImGuiComboFlags_NoPreview | ImGuiComboFlags_PopupAlignLeft)) return;
    for (const Choice& choice : names_to_choose(row)) {
        if (ImGui::Selectable(choice.name.c_str(), choice.name == text)) set(row, choice.name);
        mark(row.frame.targets, "parameter." + row.parameter.info->name + "." + choice.name);
        ImGui::SameLine(ImGui::GetFontSize() * 10.0f);
        ImGui::TextDisabled("%s", choice.from.c_str());
    }
    ImGui::EndCombo();
}

void edit_value(const Row& row) {
    switch (row.parameter.info->kind) {
        case ParameterKind::kInt:
            return edit_int(row);
        case ParameterKind::kFloat:
            return edit_float(row);
        case ParameterKind::kBool:
            return edit_bool(row);
        case ParameterKind::kRadio:
            return edit_radio(row);
        case ParameterKind::kString:
            return edit_text(row);
        case ParameterKind::kContainer:
        case ParameterKind::kImage:
            return choose_name(row);
    }
}

void reset_button(const Row& row) {
    const float side = ImGui::GetFrameHeight();
    if (!row.parameter.is_written) {
        ImGui::Dummy({side, side});
        return;
    }
    ImGui::PushStyleColor(ImGuiCol_Button, 0);
    if (ImGui::Button("↺", {side, side}))
        row.frame.commands.push_back(
            ResetParameter{row.container.name, row.parameter.info->name, "reset " + row.label});
    ImGui::PopStyleColor();
    mark(row.frame.targets, "reset." + row.parameter.info->name);
    if (ImGui::IsItemHovered()) ImGui::SetTooltip("changed here; click to take it back");
}

void show_label(const Row& row, float width) {
    const ParameterInfo& info = *row.parameter.info;
    ImGui::AlignTextToFramePadding();
    const ImVec2 start = ImGui::GetCursorScreenPos();
    if (row.parameter.is_written) {
        const float line = ImGui::GetFrameHeight();
        ImGui::GetWindowDrawList()->AddRectFilled({start.x, start.y + line * 0.15f},
                                                  {start.x + line * 0.12f, start.y + line * 0.85f}, kAccent, 2.0f);
    }
    ImGui::PushClipRect(start, {start.x + width, start.y + ImGui::GetFrameHeight()}, true);
    ImGui::SetCursorPosX(ImGui::GetCursorPosX() + ImGui::GetFontSize() * 0.5f);
    ImGui::TextUnformatted(info.label.c_str());
    ImGui::PopClipRect();
}

void show_parameter(const Row& row) {
    PanelFrame& frame = row.frame;
    const ParameterInfo& info = *row.parameter.info;
    const bool is_idle = !row.parameter.idle_reason.empty();
    ImGui::PushID(info.name.c_str());
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const float full = ImGui::GetContentRegionAvail().x;
    const float label_width = full * 0.46f;
    if (frame.studio.shown_parameter == info.name) {
        ImGui::GetWindowDrawList()->AddRectFilled(start, {start.x + full, start.y + ImGui::GetFrameHeight()},
                                                  IM_COL32(242, 184, 75, 60), 4.0f);
        if (frame.studio.shown_countdown > 110) ImGui::SetScrollHereY(0.4f);
    }
    if (is_idle) ImGui::PushStyleVar(ImGuiStyleVar_Alpha, 0.45f);
    ImGui::BeginGroup();
    show_label(row, label_width - ImGui::GetStyle().ItemSpacing.x);
    const bool is_curve = row.parameter.notes != nullptr && row.parameter.notes->curve;
    if (!is_curve) ImGui::SameLine(label_width);
    const float reset_width = ImGui::GetFrameHeight() + ImGui::GetStyle().ItemInnerSpacing.x;
    ImGui::BeginGroup();
    ImGui::PushItemWidth(full - label_width - reset_width);
    if (std::exchange(frame.memory.wants_value, false)) ImGui::SetKeyboardFocusHere();
    if (is_curve)
        edit_curve(row, full - reset_width);
    else
        edit_value(row);
    ImGui::PopItemWidth();
    ImGui::EndGroup();
    bracket_change(frame, row.label);
    mark(frame.targets, "parameter." + info.name);
    const bool is_active = ImGui::IsItemActive() || ImGui::IsItemFocused();
    ImGui::SameLine(full - ImGui::GetFrameHeight());
    reset_button(row);
    ImGui::EndGroup();
    if (is_idle) ImGui::PopStyleVar();
    if (ImGui::IsItemHovered() || is_active) frame.memory.help = help_text(row.parameter);
    if (is_idle && ImGui::IsItemHovered()) ImGui::SetTooltip("%s", row.parameter.idle_reason.c_str());
    ImGui::PopID();
}

void refresh_states(PanelFrame& frame, const ContainerFacts& container) {
    PanelMemory& memory = frame.memory;
    const Document& document = *frame.studio.document;
    const SceneFacts* facts = frame.studio.report.facts.get();
    if (memory.states_revision == document.revision && memory.states_facts == facts &&
        memory.states_container == container.name)
        return;
    memory.states_revision = document.revision;
    memory.states_facts = facts;
    memory.states_container = container.name;
    memory.states = parameter_states(*facts, container, written_parameters(document, container.name));
}

void choose_container(PanelFrame& frame, const ContainerFacts& selected) {
    ImGui::SetNextItemWidth(-1);
    if (ImGui::BeginCombo("##container", selected.name.c_str(), ImGuiComboFlags_HeightLarge)) {
        for (const ContainerFacts& container : frame.studio.report.facts->containers) {
            if (!container.noted) continue;
            if (ImGui::Selectable(container.name.c_str(), &container == &selected))
                frame.commands.push_back(SelectContainer{container.name});
            mark(frame.targets, "container." + container.name);
        }
        ImGui::EndCombo();
    }
    mark(frame.targets, "container");
}

void search_line(PanelFrame& frame, const ContainerFacts& container) {
    PanelMemory& memory = frame.memory;
    const float reset_width = ImGui::CalcTextSize("Reset all").x + 2 * ImGui::GetStyle().FramePadding.x;
    ImGui::SetNextItemWidth(-reset_width - ImGui::GetStyle().ItemSpacing.x);
    if (memory.wants_search) ImGui::SetKeyboardFocusHere();
    memory.wants_search = false;
    if (ImGui::InputTextWithHint("##search", "Search (Ctrl+F)", &memory.search, ImGuiInputTextFlags_EnterReturnsTrue))
        memory.wants_value = true;
    if (ImGui::IsItemDeactivated() && ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape))) memory.search.clear();
    mark(frame.targets, "search");
    ImGui::SameLine();
    if (ImGui::Button("Reset all")) frame.commands.push_back(ResetParameters{container.name});
    mark(frame.targets, "reset all");
}

void show_groups(PanelFrame& frame, const ContainerFacts& container) {
    const std::string& search = frame.memory.search;
    bool any = false;
    for (const ParameterStates& group : frame.memory.states) {
        const bool has_match = std::any_of(group.parameters.begin(), group.parameters.end(),
                                           [&](const ParameterState& p) { return matches_search(p, search); });
        if (!has_match) continue;
        const bool has_shown =
            std::any_of(group.parameters.begin(), group.parameters.end(),
                        [&](const ParameterState& p) { return p.info->name == frame.studio.shown_parameter; });
        if (!search.empty() || has_shown) ImGui::SetNextItemOpen(true);
        const bool first = !any;
        any = true;
        const std::string title = group.name.empty() ? "Parameters" : group.name;
        // Headers of their own during a search, so that the groups are open or closed as before when it ends.
        const std::string header = search.empty() ? title : title + "##found";
        const bool open =
            ImGui::CollapsingHeader(header.c_str(), first ? ImGuiTreeNodeFlags_DefaultOpen : ImGuiTreeNodeFlags_None);
        mark(frame.targets, "group." + title);
        if (!open) continue;
        for (const ParameterState& parameter : group.parameters)
            if (matches_search(parameter, search))
                show_parameter({frame, container, parameter, parameter.info->label + " of " + container.name});
    }
    if (!any) ImGui::TextWrapped("No parameter matches. Esc in the search shows all again.");
}

void show_help(PanelFrame& frame, float height) {
    ImGui::PushStyleColor(ImGuiCol_ChildBg, kWell);
    ImGui::BeginChild("help", {0, height}, false, ImGuiWindowFlags_AlwaysUseWindowPadding);
    if (frame.memory.help.empty())
        ImGui::TextDisabled("%s", "Point at a parameter to read what it does.");
    else
        ImGui::TextWrapped("%s", frame.memory.help.c_str());
    ImGui::EndChild();
    mark(frame.targets, "help");
    ImGui::PopStyleColor();
}

}  // namespace

void parameter_panel(PanelFrame& frame, const Area& area) {
    begin_panel("Parameters", area, false);
    const ContainerFacts* container = selected_container(frame.studio);
    if (container == nullptr || !frame.studio.document) {
        const bool is_loading =
            frame.studio.scene && frame.studio.report.failed_scene != frame.studio.orders.scene_number;
        ImGui::TextDisabled("%s", is_loading ? "loading …" : "nothing here has parameters");
        ImGui::End();
        return;
    }
    refresh_states(frame, *container);
    choose_container(frame, *container);
    search_line(frame, *container);
    const float help_height = std::min(ImGui::GetFontSize() * 10.0f, area.height * 0.25f);
    ImGui::BeginChild("list", {0, -help_height - ImGui::GetStyle().ItemSpacing.y}, false,
                      ImGuiWindowFlags_NavFlattened);
    show_groups(frame, *container);
    ImGui::EndChild();
    show_help(frame, help_height);
    ImGui::End();
}

}  // namespace tovu
