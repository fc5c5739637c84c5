// The bar at the top: file, undo, the states A and B, saving, exporting.
#include <fmt/format.h>

#include "actions.h"
#include "panels.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

void file_buttons(PanelFrame& frame) {
    if (tool_button(frame, "Save", "Saves into the file (Ctrl+S)")) save(frame);
    if (tool_button(frame, "Save as", "Saves under another name, or as a look (Ctrl+Shift+S)"))
        frame.memory.shows_save_as = true;
    const bool exports = frame.studio.export_state && !frame.studio.export_state->ended;
    if (tool_button(frame, "Export", "Makes a video or a still (Ctrl+E)", {.is_on = exports}))
        frame.memory.shows_export = true;
}

void undo_buttons(PanelFrame& frame, const Document& document) {
    const std::string undo = undo_label(document), redo = redo_label(document);
    tool_gap();
    if (tool_button(frame, "Undo", undo.empty() ? "Nothing to undo" : "Undo: " + undo + " (Ctrl+Z)",
                    {.enabled = !undo.empty()}))
        frame.commands.push_back(Undo{});
    if (tool_button(frame, "Redo", redo.empty() ? "Nothing to redo" : "Redo: " + redo + " (Ctrl+Y)",
                    {.enabled = !redo.empty()}))
        frame.commands.push_back(Redo{});
}

void state_buttons(PanelFrame& frame, const Document& document) {
    tool_gap();
    for (const size_t state : {size_t{0}, size_t{1}}) {
        const char* name = state == 0 ? "A" : "B";
        if (tool_button(frame, name, std::string("Shows state ") + name + " (F2 changes between A and B)",
                        {.is_on = document.shown == state}))
            frame.commands.push_back(ShowState{state});
    }
    const bool is_a = document.shown == 0;
    if (tool_button(frame, is_a ? "A → B" : "B → A", "Copies the shown state to the other one"))
        frame.commands.push_back(CopyToOtherState{});
}

// The progress of a running export, or else the latest message.
Notice current_notice(const Studio& studio) {
    const std::optional<ExportState>& state = studio.export_state;
    if (!state || state->ended) return studio.notice;
    if (state->frames_total == 0) return {"Export begins", false};
    return {fmt::format("Exporting: {} of {} pictures", state->frames_done, state->frames_total), false};
}

}  // namespace

void top_bar(PanelFrame& frame, const Area& area) {
    begin_panel("Top", area, false);
    const Studio& studio = frame.studio;
    const bool is_gallery = studio.page == Page::kGallery;
    const Document* document = !is_gallery && studio.document ? &*studio.document : nullptr;
    if (tool_button(frame, "Gallery", "All looks and scenes (F1)", {.is_on = is_gallery}))
        frame.commands.push_back(ShowGallery{});
    if (tool_button(frame, "Open", "Opens a file (Ctrl+O)")) frame.memory.shows_open = true;
    if (document != nullptr) {
        file_buttons(frame);
        undo_buttons(frame, *document);
        state_buttons(frame, *document);
        tool_gap();
    }
    const float keys_left = area.width - button_width("Keys") - ImGui::GetStyle().WindowPadding.x;
    const auto room = [&] { return keys_left - ImGui::GetCursorPosX() - ImGui::GetStyle().ItemSpacing.x; };
    const Notice notice = current_notice(studio);
    if (document != nullptr) {
        fitted_text(document_title(*document), notice.text.empty() ? room() : room() / 2,
                    ImGui::GetColorU32(ImGuiCol_Text));
        widgets::tip(document->file.empty() ? "Not saved yet" : document->file.string());
        tool_gap();
    }
    fitted_text(notice.text, room(), notice.is_error ? kMistake : kAccent);
    if (!notice.text.empty()) widgets::tip(notice.text);
    ImGui::SameLine(keys_left);
    if (tool_button(frame, "Keys", "What the keys and the mouse do")) frame.memory.shows_keys = true;
    ImGui::End();
}

}  // namespace tovu
