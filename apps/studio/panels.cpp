#include "panels.h"

#include <unistd.h>

#include <cstdlib>

#include "theme.h"

namespace tovu {

void mark(Targets& targets, const std::string& name) {
    if (!targets.wanted) return;
    const ImVec2 low = ImGui::GetItemRectMin(), high = ImGui::GetItemRectMax();
    targets.places[name] = {low.x, low.y, high.x, high.y};
}

bool tool_button(PanelFrame& frame, const char* label, const char* tip, bool is_on) {
    if (is_on) ImGui::PushStyleColor(ImGuiCol_Button, kAccentSoft);
    const bool pressed = ImGui::Button(label);
    if (is_on) ImGui::PopStyleColor();
    mark(frame.targets, label);
    if (ImGui::IsItemHovered()) ImGui::SetTooltip("%s", tip);
    ImGui::SameLine();
    return pressed;
}

void begin_panel(const char* name, const Area& area, bool scrolls) {
    ImGui::SetNextWindowPos({area.x, area.y});
    ImGui::SetNextWindowSize({area.width, area.height});
    ImGuiWindowFlags flags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                             ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoBringToFrontOnFocus;
    if (!scrolls) flags |= ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoScrollWithMouse;
    ImGui::Begin(name, nullptr, flags);
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
    // In a group, one item can be left and another one taken in the same frame.
    if (ImGui::IsItemDeactivated()) frame.commands.push_back(EndChange{});
    if (ImGui::IsItemActivated()) frame.commands.push_back(BeginChange{label});
}

}  // namespace tovu
