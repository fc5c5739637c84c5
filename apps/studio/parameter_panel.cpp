// The parameters of the selected container, for any plug-in.
#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "container_keys.h"
#include "panel_line.h"
#include "panels.h"
#include "theme.h"
#include "value_field.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

struct Row {
    PanelFrame& frame;
    const ContainerFacts& container;
    const ParameterState& parameter;

    const stage::ParameterInfo& info() const { return *parameter.info; }
    std::string change() const { return info().label + " of " + container.name; }
};

bool is_on(const Row& row, const std::string& parameter) {
    for (const ParameterStates& group : row.frame.memory.states)
        for (const ParameterState& state : group.parameters)
            if (state.info->name == parameter) return state.value == stage::ParameterValue(true);
    return false;
}

// The parameters that a lock keeps equal to this one while the lock is on.
std::vector<std::string> bound_to(const Row& row) {
    std::vector<std::string> bound;
    const std::string& name = row.info().name;
    for (const stage::ParameterNotes& lock : row.container.noted->notes.parameters)
        for (const stage::ParameterPair& pair : lock.binds)
            if ((pair[0] == name || pair[1] == name) && is_on(row, lock.name))
                bound.push_back(pair[0] == name ? pair[1] : pair[0]);
    return bound;
}

void set(const Row& row, const stage::ParameterValue& value) {
    row.frame.commands.push_back(SetParameter{row.container.name, row.info().name, value, row.change()});
    for (const std::string& bound : bound_to(row))
        row.frame.commands.push_back(SetParameter{row.container.name, bound, value, row.change()});
}

// Sets all values that the parameter needs, as one step of undo, and shows the first one that the designer has to
// choose.
void turn_on(const Row& row) {
    Commands& commands = row.frame.commands;
    commands.push_back(BeginChange{"turn on " + row.change()});
    for (const Need& need : row.parameter.needs.list)
        if (need.value)
            commands.push_back(SetParameter{row.container.name, need.info->name, *need.value, row.change()});
    commands.push_back(EndChange{});
    const auto to_choose = std::find_if(row.parameter.needs.list.begin(), row.parameter.needs.list.end(),
                                        [](const Need& need) { return need.info != nullptr && !need.value; });
    if (to_choose != row.parameter.needs.list.end())
        commands.push_back(ShowParameter{row.container.name, to_choose->info->name});
}

// Whether the needs are shown below the line. For a parameter without effect, only if it is changed, searched for or
// used.
bool explains_needs(const Row& row) {
    const Needs& needs = row.parameter.needs;
    const PanelMemory& memory = row.frame.memory;
    if (!needs.is_idle) return !needs.list.empty();
    return row.parameter.is_written || !memory.search.empty() || memory.used_idle.contains(row.info().name);
}

void show_needs(const Row& row) {
    const std::vector<Need>& list = row.parameter.needs.list;
    ImGui::Indent(ImGui::GetFontSize() * 0.5f);
    if (std::any_of(list.begin(), list.end(), [](const Need& need) { return need.info != nullptr; })) {
        const bool sets =
            std::any_of(list.begin(), list.end(), [](const Need& need) { return need.value.has_value(); });
        if (ImGui::Button(((sets ? "Turn on##" : "Go there##") + row.info().name).c_str())) turn_on(row);
        mark(row.frame.targets, "turn on." + row.info().name);
        ImGui::SameLine();
    }
    ImGui::PushStyleColor(ImGuiCol_Text, kWarning);
    ImGui::AlignTextToFramePadding();
    ImGui::TextWrapped("%s", needs_text(row.parameter).c_str());
    ImGui::PopStyleColor();
    ImGui::Unindent(ImGui::GetFontSize() * 0.5f);
}

// The parameter that Enter in the search selects: the first whose label has the words, else the first that matches.
// Null if none matches.
const ParameterState* searched_parameter(const PanelMemory& memory) {
    const ParameterState* found = nullptr;
    for (const ParameterStates& group : memory.states) {
        for (const ParameterState& parameter : group.parameters) {
            if (has_words(parameter.info->label, memory.search)) return &parameter;
            if (found == nullptr && matches_search(parameter, memory.search)) found = &parameter;
        }
    }
    return found;
}

void show_parameter(const Row& row) {
    PanelFrame& frame = row.frame;
    const ParameterState& parameter = row.parameter;
    LineShown line{"parameter." + row.info().name, row.info().label,        row.change(),
                   parameter.is_written,           parameter.needs.is_idle, is_curve(parameter)};
    line.wants_focus = frame.memory.wants_value && &parameter == searched_parameter(frame.memory);
    line.is_highlighted = frame.studio.shown_parameter == row.info().name;
    if (line.is_highlighted && frame.studio.shown_countdown > kShownFrames - 10) ImGui::SetScrollHereY(0.4f);
    const LineEvents events = panel_line(frame, line, [&](float width) {
        if (const auto edited = value_field(frame, row.container, parameter, width)) set(row, *edited);
    });
    if (events.reset)
        frame.commands.push_back(ResetParameter{row.container.name, row.info().name, "reset " + row.change()});
    if (events.used) frame.memory.used_idle.insert(row.info().name);
    if (events.shows_help)
        show_help(frame.memory, line.target, row.info().label, help_text(parameter, row.container.noted->plugin));
    if (explains_needs(row)) show_needs(row);
}

void refresh_states(PanelFrame& frame, const ContainerFacts& container) {
    PanelMemory& memory = frame.memory;
    const Document& document = *frame.studio.document;
    const SceneFacts* facts = frame.studio.report.facts.get();
    if (memory.states_container != container.name) memory.used_idle.clear();
    if (memory.states_revision == document.revision && memory.states_facts == facts &&
        memory.states_container == container.name)
        return;
    memory.states_revision = document.revision;
    memory.states_facts = facts;
    memory.states_container = container.name;
    memory.written_keys = written_keys(document, container.name);
    memory.states.clear();
    if (container.noted)
        memory.states = parameter_states(*facts, container, written_parameters(document, container.name));
}

// The container's name and, if there are several, its place among them.
std::string container_label(const PanelFrame& frame, const ContainerFacts& selected) {
    const auto& containers = frame.studio.report.facts->containers;
    if (containers.size() == 1) return selected.name;
    return fmt::format("{} ({} of {})", selected.name, &selected - containers.data() + 1, containers.size());
}

void choose_container(PanelFrame& frame, const ContainerFacts& selected) {
    ImGui::SetNextItemWidth(-1);
    const bool opened =
        ImGui::BeginCombo("##container", container_label(frame, selected).c_str(), ImGuiComboFlags_HeightLarge);
    if (opened) {
        for (const ContainerFacts& container : frame.studio.report.facts->containers) {
            if (ImGui::Selectable(container.name.c_str(), &container == &selected))
                frame.commands.push_back(SelectContainer{container.name});
            mark(frame.targets, "container." + container.name);
        }
        ImGui::EndCombo();
    } else {
        widgets::tip("The container whose values are below");
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

// Shows the groups. Returns whether any line was shown.
bool show_parameter_groups(PanelFrame& frame, const ContainerFacts& container) {
    bool any = false;
    for (const ParameterStates& group : frame.memory.states) {
        const auto matches = [&](const ParameterState& one) { return matches_search(one, frame.memory.search); };
        if (std::none_of(group.parameters.begin(), group.parameters.end(), matches)) continue;
        if (std::any_of(group.parameters.begin(), group.parameters.end(),
                        [&](const ParameterState& one) { return one.info->name == frame.studio.shown_parameter; }))
            ImGui::SetNextItemOpen(true);
        const bool is_first = !std::exchange(any, true);
        if (!group_header(frame, group.name.empty() ? "Parameters" : group.name, is_first)) continue;
        for (const ParameterState& parameter : group.parameters)
            if (matches(parameter)) show_parameter({frame, container, parameter});
    }
    frame.memory.wants_value = false;
    return any;
}

// Shows the other things that the plug-in registers: name, information texts, buttons. Returns whether anything was
// shown.
bool show_plugin(PanelFrame& frame, const ContainerFacts& container) {
    const stage::Plugin& plugin = container.noted->plugin;
    const bool has_match =
        has_words(plugin.name, frame.memory.search) ||
        std::any_of(plugin.buttons.begin(), plugin.buttons.end(),
                    [&](const stage::PushButton& button) { return has_words(button.label, frame.memory.search); });
    if (!has_match || !group_header(frame, "Plug-in")) return has_match;
    ImGui::TextDisabled("%s", plugin.name.c_str());
    for (const stage::InfoText& info : plugin.info_texts) ImGui::TextWrapped("%s", info.text.c_str());
    for (const stage::PushButton& button : plugin.buttons) {
        if (ImGui::Button((button.label + "##" + button.name).c_str()))
            frame.commands.push_back(PressButton{container.name, button.name});
        mark(frame.targets, "press." + button.name);
        if (ImGui::IsItemHovered() || ImGui::IsItemFocused())
            show_help(frame.memory, "press." + button.name, button.label,
                      "Presses the plug-in's button now, in the run that is on screen. Nothing is saved: after an edit "
                      "or a jump in time the scene runs again without it. An entry of the timeline in the scene file "
                      "presses it at its time: press = \"" +
                          button.name + "\".");
    }
    return true;
}

void show_lines(PanelFrame& frame, const ContainerFacts& container) {
    bool any = show_parameter_groups(frame, container);
    any |= show_container_keys(frame, container.name);
    any |= container.noted && show_plugin(frame, container);
    if (!any) ImGui::TextWrapped("Nothing matches. Esc in the search shows all again.");
}

void show_foot(PanelFrame& frame, float height) {
    ImGui::PushStyleColor(ImGuiCol_ChildBg, kWell);
    ImGui::BeginChild("help", {0, height}, false, ImGuiWindowFlags_AlwaysUseWindowPadding);
    if (frame.memory.help.empty()) {
        ImGui::PushStyleColor(ImGuiCol_Text, kDim);
        ImGui::TextWrapped("Point at a value to read what it does. Drag the value to change it, or click it to type.");
        ImGui::PopStyleColor();
    } else {
        ImGui::TextDisabled("%s", frame.memory.help_title.c_str());
        ImGui::TextWrapped("%s", frame.memory.help.c_str());
    }
    ImGui::EndChild();
    mark(frame.targets, "help");
    ImGui::PopStyleColor();
}

// Clears the search when another panel shows a parameter, since the search might hide it.
void end_search_for_shown(PanelFrame& frame) {
    if (frame.studio.shown_countdown == kShownFrames) frame.memory.search.clear();
}

}  // namespace

void parameter_panel(PanelFrame& frame, const Area& area) {
    begin_panel("Parameters", area, false);
    const ContainerFacts* container = selected_container(frame.studio);
    if (container == nullptr || !frame.studio.document) {
        const bool is_loading =
            frame.studio.scene && frame.studio.report.failed_scene != frame.studio.orders.scene_number;
        ImGui::TextDisabled("%s", is_loading ? "Loading …" : "Nothing here has parameters");
        ImGui::End();
        return;
    }
    refresh_states(frame, *container);
    end_search_for_shown(frame);
    choose_container(frame, *container);
    search_line(frame, *container);
    // In a low panel the help becomes smaller to leave room for the values.
    const float line = ImGui::GetFontSize();
    const float help_height = std::clamp(area.height - 14.0f * line, 2.5f * line, 10.0f * line);
    ImGui::BeginChild("list", {0, -help_height - ImGui::GetStyle().ItemSpacing.y}, false,
                      ImGuiWindowFlags_NavFlattened);
    show_lines(frame, *container);
    ImGui::EndChild();
    show_foot(frame, help_height);
    ImGui::End();
}

}  // namespace tovu
