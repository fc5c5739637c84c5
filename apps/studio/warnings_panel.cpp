// The panel with the warnings about the played scene.
#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "panels.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

// The container that a message names in quotes, and the first of its parameters in the message.
std::optional<ShowParameter> target_of(const Studio& studio, const std::string& message) {
    if (!studio.report.facts) return {};
    for (const ContainerFacts& container : studio.report.facts->containers) {
        if (!container.noted || message.find("'" + container.name + "'") == std::string::npos) continue;
        std::istringstream words(message);
        for (std::string word; words >> word;) {
            std::erase_if(word, [](char c) { return c != '_' && std::isalnum(static_cast<unsigned char>(c)) == 0; });
            if (stage::find_parameter(container.noted->plugin, word) != nullptr)
                return ShowParameter{container.name, word};
        }
        return ShowParameter{container.name, ""};
    }
    return {};
}

}  // namespace

void warnings_panel(PanelFrame& frame, const Area& area) {
    begin_panel("Warnings", area);
    const auto& facts = frame.studio.report.facts;
    if (facts) ImGui::TextDisabled("Warnings");
    mark(frame.targets, "warnings");
    if (facts && facts->warnings.empty()) ImGui::TextDisabled("None");
    int index = 0;
    for (const std::string& line : facts ? facts->warnings : std::vector<std::string>()) {
        ImGui::PushID(index);
        const std::string text = without_place(line);
        const float indent = ImGui::GetFontSize() * 0.6f, width = ImGui::GetContentRegionAvail().x - indent;
        const float height = ImGui::CalcTextSize(text.c_str(), nullptr, false, width).y;
        const ImVec2 start = ImGui::GetCursorScreenPos();
        if (ImGui::Selectable("##line", false, 0, {0, height}))
            if (const auto target = target_of(frame.studio, text)) frame.commands.push_back(*target);
        mark(frame.targets, fmt::format("warning.{}", index++));
        widgets::tip("Click to go to the parameter");
        ImDrawList* list = ImGui::GetWindowDrawList();
        list->AddRectFilled(start, {start.x + indent * 0.3f, start.y + height}, kWarning);
        list->AddText(ImGui::GetFont(), ImGui::GetFontSize(), {start.x + indent, start.y},
                      ImGui::GetColorU32(ImGuiCol_Text), text.c_str(), nullptr, width);
        ImGui::Spacing();
        ImGui::PopID();
    }
    ImGui::End();
}

}  // namespace tovu
