#include "tip.h"

#include <imgui.h>
#include <imgui_internal.h>

#include <algorithm>

namespace widgets {

namespace {

constexpr float kRestSeconds = 0.5f;
constexpr float kWidth = 24;  // of a line of text, in font sizes

}  // namespace

void tip(const std::string& text) {
    if (!ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled) || ImGui::IsAnyMouseDown()) return;
    const ImGuiContext& context = *ImGui::GetCurrentContext();
    if (context.NavDisableMouseHover) return;  // keyboard navigation: ImGui reports the focused item as hovered
    // Items without an ID, such as plain text, have no timer: their text shows at once.
    if (context.HoveredId != 0 && context.HoveredIdTimer < kRestSeconds) return;
    const float width = kWidth * ImGui::GetFontSize(), gap = ImGui::GetStyle().ItemSpacing.y;
    const ImVec2 padding = ImGui::GetStyle().WindowPadding, window = ImGui::GetIO().DisplaySize;
    const ImVec2 text_size = ImGui::CalcTextSize(text.c_str(), nullptr, false, width);
    const ImVec2 size{text_size.x + 2 * padding.x, text_size.y + 2 * padding.y};
    const float below = ImGui::GetItemRectMax().y + gap, above = ImGui::GetItemRectMin().y - gap - size.y;
    const float x = std::min(ImGui::GetItemRectMin().x, window.x - size.x - gap);
    ImGui::SetNextWindowPos({std::max(x, 0.0f), std::max(below + size.y > window.y ? above : below, 0.0f)});
    ImGui::BeginTooltip();
    ImGui::PushTextWrapPos(padding.x + width);
    ImGui::TextUnformatted(text.c_str());
    ImGui::PopTextWrapPos();
    ImGui::EndTooltip();
}

}  // namespace widgets
