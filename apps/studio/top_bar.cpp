// The line at the top: file, undo, the two states, saving, exporting.
#include "panels.h"
#include "theme.h"

namespace tovu {

namespace {

// A button that says what it does when pointed at. Returns whether it was pressed.
bool button(PanelFrame& frame, const char* label, const std::string& tip, bool enabled = true, bool is_on = false) {
    ImGui::BeginDisabled(!enabled);
    if (is_on) ImGui::PushStyleColor(ImGuiCol_Button, kAccentSoft);
    const bool pressed = ImGui::Button(label);
    if (is_on) ImGui::PopStyleColor();
    ImGui::EndDisabled();
    mark(frame.targets, label);
    if (ImGui::IsItemHovered(ImGuiHoveredFlags_AllowWhenDisabled)) ImGui::SetTooltip("%s", tip.c_str());
    ImGui::SameLine();
    return pressed;
}

void state_buttons(PanelFrame& frame, const Document& document) {
    for (const size_t state : {size_t{0}, size_t{1}}) {
        const char* name = state == 0 ? "A" : "B";
        if (button(frame, name, std::string("shows state ") + name + " (F2 changes between A and B)", true,
                   document.shown == state))
            frame.commands.push_back(ShowState{state});
    }
    const bool is_a = document.shown == 0;
    if (button(frame, is_a ? "A → B" : "B → A", "copies the shown state to the other one"))
        frame.commands.push_back(CopyToOtherState{});
}

void document_buttons(PanelFrame& frame, const Document& document) {
    const std::string undo = undo_label(document), redo = redo_label(document);
    if (button(frame, "Undo", undo.empty() ? "nothing to undo" : "undo: " + undo + " (Ctrl+Z)", !undo.empty()))
        frame.commands.push_back(Undo{});
    if (button(frame, "Redo", redo.empty() ? "nothing to redo" : "redo: " + redo + " (Ctrl+Y)", !redo.empty()))
        frame.commands.push_back(Redo{});
    state_buttons(frame, document);
    if (button(frame, "Save", "into its file (Ctrl+S)")) {
        if (document.file.empty())
            frame.memory.shows_save_as = true;
        else
            frame.commands.push_back(Save{});
    }
    if (button(frame, "Save as", "under another name, or as a look (Ctrl+Shift+S)")) frame.memory.shows_save_as = true;
    const bool exports = frame.studio.export_state && !frame.studio.export_state->ended;
    if (button(frame, exports ? "Exporting …" : "Export", "a still or a video (Ctrl+E)", true, exports))
        frame.memory.shows_export = true;
    ImGui::TextUnformatted(document_title(document).c_str());
    ImGui::SameLine();
}

}  // namespace

void top_bar(PanelFrame& frame, const Area& area) {
    begin_panel("Top", area, false);
    const Studio& studio = frame.studio;
    if (button(frame, "Gallery", "all looks and scenes (F1)", true, studio.page == Page::kGallery))
        frame.commands.push_back(ShowGallery{});
    if (button(frame, "Open", "a scene or a look from a file (Ctrl+O)")) frame.memory.shows_open = true;
    if (studio.page == Page::kStage && studio.document) document_buttons(frame, *studio.document);
    const float keys_width = ImGui::CalcTextSize("Keys").x + 2 * ImGui::GetStyle().FramePadding.x;
    const float keys_left = area.width - keys_width - ImGui::GetStyle().WindowPadding.x;
    const Notice& notice = studio.notice;
    if (!notice.text.empty()) {
        const ImVec2 start = ImGui::GetCursorScreenPos();
        ImGui::PushClipRect(start, {area.x + keys_left - ImGui::GetStyle().ItemSpacing.x, area.y + area.height}, true);
        ImGui::PushStyleColor(ImGuiCol_Text, notice.is_error ? kMistake : kAccent);
        ImGui::TextUnformatted(notice.text.c_str());
        ImGui::PopStyleColor();
        ImGui::PopClipRect();
        if (ImGui::IsItemHovered()) ImGui::SetTooltip("%s", notice.text.c_str());
        ImGui::SameLine();
    }
    ImGui::SameLine(keys_left);
    if (button(frame, "Keys", "what the keys and the mouse do")) frame.memory.shows_keys = true;
    ImGui::End();
}

}  // namespace tovu
