#include "panels.h"

#include <imgui_internal.h>
#include <unistd.h>

#include <cstdlib>

#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

void mark(Targets& targets, const std::string& name) {
    if (!targets.wanted) return;
    const ImVec2 low = ImGui::GetItemRectMin(), high = ImGui::GetItemRectMax();
    targets.places[name] = {low.x, low.y, high.x, high.y};
}

float button_width(const char* label) {
    return ImGui::CalcTextSize(label, nullptr, true).x + 2 * ImGui::GetStyle().FramePadding.x;
}

bool tool_button(PanelFrame& frame, const char* label, const std::string& tip, const ToolButton& button) {
    const float width = button.width > 0 ? button.width : button_width(label);
    const bool is_first = ImGui::GetCursorPosX() <= ImGui::GetStyle().WindowPadding.x;
    if (!is_first && width > ImGui::GetContentRegionAvail().x) ImGui::NewLine();
    ImGui::BeginDisabled(!button.enabled);
    if (button.is_on) ImGui::PushStyleColor(ImGuiCol_Button, kAccentSoft);
    const bool pressed = ImGui::Button(label, {width, 0});
    if (button.is_on) ImGui::PopStyleColor();
    ImGui::EndDisabled();
    mark(frame.targets, label);
    widgets::tip(tip);
    ImGui::SameLine();
    return pressed;
}

bool main_button(const char* label) {
    ImGui::PushStyleColor(ImGuiCol_Button, kAccentSoft);
    const bool pressed = ImGui::Button(label);
    ImGui::PopStyleColor();
    return pressed;
}

void tool_gap() {
    ImGui::SameLine(0, ImGui::GetFontSize() * 1.25f);
}

void fitted_text(const std::string& text, float width, ImU32 color) {
    ImGui::AlignTextToFramePadding();
    const ImVec2 start{ImGui::GetCursorScreenPos().x,
                       ImGui::GetCursorScreenPos().y + ImGui::GetCurrentWindow()->DC.CurrLineTextBaseOffset};
    const ImVec2 size = ImGui::CalcTextSize(text.c_str());
    const float right = start.x + std::max(width, 0.0f);
    ImGui::Dummy({std::min(size.x, std::max(width, 0.0f)), ImGui::GetFrameHeight()});
    ImGui::PushStyleColor(ImGuiCol_Text, color);
    ImGui::RenderTextEllipsis(ImGui::GetWindowDrawList(), start, {right, start.y + size.y}, right, right, text.c_str(),
                              nullptr, &size);
    ImGui::PopStyleColor();
}

void begin_panel(const char* name, const Area& area, bool scrolls) {
    ImGui::SetNextWindowPos({area.x, area.y});
    ImGui::SetNextWindowSize({area.width, area.height});
    ImGuiWindowFlags flags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                             ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoBringToFrontOnFocus;
    if (!scrolls) flags |= ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoScrollWithMouse;
    ImGui::PushStyleVar(ImGuiStyleVar_WindowBorderSize, 0);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0);
    ImGui::Begin(name, nullptr, flags);
    ImGui::PopStyleVar(2);
}

bool shows_numbers(const PanelMemory& memory, float width) {
    return memory.shows_numbers.value_or(width >= 95.0f * ImGui::GetFontSize());
}

std::filesystem::path folder_for_files(const Document& document) {
    std::error_code ignored;
    const bool fits = !document.file.empty() && access(document.folder.c_str(), W_OK) == 0;
    return fits ? document.folder : std::filesystem::current_path(ignored);
}

std::filesystem::path typed_path(const std::string& text, const std::filesystem::path& folder) {
    const char* home = std::getenv("HOME");
    if (home != nullptr && text.starts_with("~/")) return home + text.substr(1);
    return folder / text;
}

void bracket_change(PanelFrame& frame, const std::string& label) {
    // In a group, one item can be deactivated and another one activated in the same frame.
    if (ImGui::IsItemDeactivated()) frame.commands.push_back(EndChange{});
    if (ImGui::IsItemActivated()) frame.commands.push_back(BeginChange{label});
}

}  // namespace tovu
