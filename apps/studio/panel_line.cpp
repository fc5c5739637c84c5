#include "panel_line.h"

#include "theme.h"

namespace tovu {

namespace {

constexpr float kNarrowPanel = 19.0f;  // lines of text: the smallest width with labels and values side by side
constexpr float kLabelShare = 0.46f;   // of the width

void draw_label(const LineShown& line, float width) {
    const ImVec2 start = ImGui::GetCursorScreenPos();
    if (line.is_written) {
        const float height = ImGui::GetFrameHeight();
        ImGui::GetWindowDrawList()->AddRectFilled({start.x, start.y + height * 0.15f},
                                                  {start.x + height * 0.12f, start.y + height * 0.85f}, kAccent, 2.0f);
    }
    const float indent = ImGui::GetFontSize() * 0.5f;
    ImGui::SetCursorPosX(ImGui::GetCursorPosX() + indent);
    fitted_text(line.label, width - indent, ImGui::ColorConvertFloat4ToU32(ImGui::GetStyle().Colors[ImGuiCol_Text]));
}

struct ResetEvents {
    bool pointed = false;
    bool pressed = false;
};

// right: the right edge of the button, from the window's left edge.
ResetEvents reset_button(PanelFrame& frame, const LineShown& line, float right) {
    const float side = ImGui::GetFrameHeight();
    ImGui::SameLine(right - side);
    if (!line.is_written) {
        ImGui::Dummy({side, side});
        return {};
    }
    ImGui::PushStyleColor(ImGuiCol_Button, 0);
    ResetEvents events;
    events.pressed = ImGui::Button("↺", {side, side});
    ImGui::PopStyleColor();
    events.pointed = ImGui::IsItemHovered() || ImGui::IsItemFocused();
    const std::string target = "reset." + line.target.substr(line.target.find('.') + 1);
    mark(frame.targets, target);
    if (events.pointed)
        show_help(frame.memory, target, line.label,
                  "Takes the change back: the value of the look or the default holds again.");
    return events;
}

}  // namespace

void show_help(PanelMemory& memory, const std::string& target, const std::string& title, const std::string& text) {
    memory.help_target = target;
    memory.help_title = title;
    memory.help = text;
}

bool group_header(PanelFrame& frame, const std::string& title, bool opens) {
    // A search uses other header IDs, so that the groups are open or closed as before when it ends.
    const bool is_search = !frame.memory.search.empty();
    if (is_search) ImGui::SetNextItemOpen(true);
    const bool is_open = ImGui::CollapsingHeader((is_search ? title + "##found" : title).c_str(),
                                                 opens ? ImGuiTreeNodeFlags_DefaultOpen : ImGuiTreeNodeFlags_None);
    mark(frame.targets, "group." + title);
    return is_open;
}

LineEvents panel_line(PanelFrame& frame, const LineShown& line, const std::function<void(float width)>& field) {
    ImGui::PushID(line.target.c_str());
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const float left = ImGui::GetCursorPosX(), full = ImGui::GetContentRegionAvail().x;
    const float reset_width = ImGui::GetFrameHeight() + ImGui::GetStyle().ItemInnerSpacing.x;
    const bool is_stacked = line.takes_width || full < kNarrowPanel * ImGui::GetFontSize();
    const float label_width = is_stacked ? full - reset_width : full * kLabelShare;
    if (line.is_highlighted)
        ImGui::GetWindowDrawList()->AddRectFilled(start, {start.x + full, start.y + ImGui::GetFrameHeight()},
                                                  IM_COL32(242, 184, 75, 60), 4.0f);
    LineEvents events;
    ResetEvents reset;
    if (line.is_idle) ImGui::PushStyleVar(ImGuiStyleVar_Alpha, 0.45f);
    ImGui::BeginGroup();
    draw_label(line, label_width - ImGui::GetStyle().ItemSpacing.x);
    if (is_stacked)
        reset = reset_button(frame, line, left + full);
    else
        ImGui::SameLine(left + label_width);
    ImGui::BeginGroup();
    if (line.wants_focus) ImGui::SetKeyboardFocusHere();
    field(is_stacked ? full : full - label_width - reset_width);
    const bool is_focused = ImGui::IsItemFocused();  // asked before EndGroup, since a group has no focus
    ImGui::EndGroup();
    bracket_change(frame, line.change);
    mark(frame.targets, line.target);
    events.used = ImGui::IsItemActive() || is_focused;
    if (!is_stacked) reset = reset_button(frame, line, left + full);
    ImGui::EndGroup();
    if (line.is_idle) ImGui::PopStyleVar();
    events.reset = reset.pressed;
    // Only a moving mouse changes the help, so that a resting one does not override the keyboard.
    const ImVec2 moved = ImGui::GetIO().MouseDelta;
    const bool is_pointed = ImGui::IsItemHovered() && (moved.x != 0 || moved.y != 0);
    events.shows_help = !reset.pointed && (is_pointed || events.used || frame.memory.help_target == line.target);
    events.used |= ImGui::IsItemClicked();
    ImGui::PopID();
    return events;
}

}  // namespace tovu
