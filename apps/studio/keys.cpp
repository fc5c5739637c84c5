// The keyboard: one table for what keys do and for the window that lists them.
#include <SDL.h>

#include "panels.h"

namespace tovu {

namespace {

enum Modifier { kNone, kControl, kControlShift };

struct Key {
    SDL_Scancode code;
    Modifier modifier;
    const char* name;
    const char* what;
    void (*act)(PanelFrame& frame);
    bool while_typing = false;  // also while a text field has the keyboard
    bool repeats = false;       // while it is held
};

int64_t now(const PanelFrame& frame) {
    return std::max<int64_t>(frame.studio.report.frame, 0);
}

void toggle_view(PanelFrame& frame, bool ViewOrders::*field) {
    ViewOrders view = frame.studio.orders.view;
    view.*field = !(view.*field);
    frame.commands.push_back(SetView{view});
}

void save(PanelFrame& frame) {
    if (frame.studio.document && frame.studio.document->file.empty())
        frame.memory.shows_save_as = true;
    else
        frame.commands.push_back(Save{});
}

void set_loop_start(PanelFrame& frame) {
    const FrameRange& range = frame.studio.orders.range;
    frame.commands.push_back(SetLoop{true, {now(frame), std::max(now(frame), range.last)}});
}

void set_loop_end(PanelFrame& frame) {
    const FrameRange& range = frame.studio.orders.range;
    frame.commands.push_back(SetLoop{true, {std::min(range.first, now(frame)), now(frame)}});
}

void focus_next_panel(PanelFrame& frame) {
    constexpr const char* kPanels[] = {"Parameters", "Transport", "Top", "Picture", "Surprises", "Numbers"};
    PanelMemory& memory = frame.memory;
    memory.key_panel = memory.keys_navigate ? (memory.key_panel + 1) % IM_ARRAYSIZE(kPanels) : 0;
    memory.keys_navigate = true;
    ImGui::SetWindowFocus(frame.studio.page == Page::kGallery ? "Gallery" : kPanels[memory.key_panel]);
}

void leave(PanelFrame& frame) {
    if (frame.memory.keys_navigate)
        frame.memory.keys_navigate = false;
    else if (frame.studio.report.seeking)
        frame.commands.push_back(CancelSeek{});
    else if (frame.studio.fullscreen)
        frame.commands.push_back(SetFullscreen{false});
}

const Key kKeys[] = {
    {SDL_SCANCODE_SPACE, kNone, "Space", "play or pause",
     [](PanelFrame& f) { f.commands.push_back(SetPlaying{!f.studio.orders.playing}); }},
    {SDL_SCANCODE_RIGHT, kNone, "Right", "one frame on", [](PanelFrame& f) { f.commands.push_back(Seek{now(f) + 1}); },
     false, true},
    {SDL_SCANCODE_LEFT, kNone, "Left", "one frame back", [](PanelFrame& f) { f.commands.push_back(Seek{now(f) - 1}); },
     false, true},
    {SDL_SCANCODE_HOME, kNone, "Home", "to the start", [](PanelFrame& f) { f.commands.push_back(Seek{0}); }},
    {SDL_SCANCODE_END, kNone, "End", "to the end",
     [](PanelFrame& f) { f.commands.push_back(Seek{scene_frames(f.studio) - 1}); }},
    {SDL_SCANCODE_L, kNone, "L", "loop on or off",
     [](PanelFrame& f) {
         f.commands.push_back(SetLoop{!f.studio.orders.loop, f.studio.orders.range});
     }},
    {SDL_SCANCODE_I, kNone, "I", "the loop begins here", set_loop_start},
    {SDL_SCANCODE_O, kNone, "O", "the loop ends here", set_loop_end},
    {SDL_SCANCODE_S, kNone, "S", "safe areas", [](PanelFrame& f) { f.memory.safe_areas = !f.memory.safe_areas; }},
    {SDL_SCANCODE_F, kNone, "F", "force display", [](PanelFrame& f) { toggle_view(f, &ViewOrders::forces); }},
    {SDL_SCANCODE_B, kNone, "B", "bounding boxes", [](PanelFrame& f) { toggle_view(f, &ViewOrders::boxes); }},
    {SDL_SCANCODE_A, kNone, "A", "on air", [](PanelFrame& f) { toggle_view(f, &ViewOrders::on_air); }},
    {SDL_SCANCODE_C, kNone, "C", "the scene's camera",
     [](PanelFrame& f) {
         ViewOrders view = f.studio.orders.view;
         view.camera.reset();
         f.commands.push_back(SetView{view});
     }},
    {SDL_SCANCODE_F6, kNone, "F6", "next panel: arrows, Tab, Space and Enter work in it; Esc ends that",
     focus_next_panel, true},
    {SDL_SCANCODE_F, kControl, "Ctrl+F", "search for a parameter; Enter edits the first, Tab the next",
     [](PanelFrame& f) { f.memory.wants_search = true; }, true},
    {SDL_SCANCODE_Z, kControl, "Ctrl+Z", "undo", [](PanelFrame& f) { f.commands.push_back(Undo{}); }, false, true},
    {SDL_SCANCODE_Y, kControl, "Ctrl+Y", "redo", [](PanelFrame& f) { f.commands.push_back(Redo{}); }, false, true},
    {SDL_SCANCODE_Z, kControlShift, "Ctrl+Shift+Z", "redo", [](PanelFrame& f) { f.commands.push_back(Redo{}); }, false,
     true},
    {SDL_SCANCODE_F2, kNone, "F2", "the other state, A or B",
     [](PanelFrame& f) {
         if (f.studio.document) f.commands.push_back(ShowState{1 - f.studio.document->shown});
     }},
    {SDL_SCANCODE_O, kControl, "Ctrl+O", "open a file", [](PanelFrame& f) { f.memory.shows_open = true; }, true},
    {SDL_SCANCODE_S, kControl, "Ctrl+S", "save", save, true},
    {SDL_SCANCODE_S, kControlShift, "Ctrl+Shift+S", "save under another name",
     [](PanelFrame& f) { f.memory.shows_save_as = f.studio.document.has_value(); }, true},
    {SDL_SCANCODE_E, kControl, "Ctrl+E", "export a still or a video",
     [](PanelFrame& f) { f.memory.shows_export = f.studio.document.has_value(); }, true},
    {SDL_SCANCODE_F1, kNone, "F1", "gallery", [](PanelFrame& f) { f.commands.push_back(ShowGallery{}); }, true},
    {SDL_SCANCODE_F11, kNone, "F11", "the picture alone, in full screen",
     [](PanelFrame& f) { f.commands.push_back(SetFullscreen{!f.studio.fullscreen}); }, true},
    {SDL_SCANCODE_ESCAPE, kNone, "Esc", "stop running to a frame; leave a panel or full screen", leave, true},
    {SDL_SCANCODE_EQUALS, kControl, "Ctrl+=", "larger type",
     [](PanelFrame& f) { f.commands.push_back(SetTextSize{f.studio.text_size * 1.1f}); }, true},
    {SDL_SCANCODE_MINUS, kControl, "Ctrl+-", "smaller type",
     [](PanelFrame& f) { f.commands.push_back(SetTextSize{f.studio.text_size / 1.1f}); }, true},
    {SDL_SCANCODE_Q, kControl, "Ctrl+Q", "end the studio", [](PanelFrame& f) { f.commands.push_back(Quit{}); }, true},
};

Modifier modifier_now() {
    const ImGuiIO& io = ImGui::GetIO();
    if (!io.KeyCtrl) return kNone;
    return io.KeyShift ? kControlShift : kControl;
}

}  // namespace

void take_keys(PanelFrame& frame) {
    const ImGuiIO& io = ImGui::GetIO();
    const bool in_popup = ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopupId | ImGuiPopupFlags_AnyPopupLevel);
    if (in_popup) return;
    if (ImGui::IsMouseClicked(ImGuiMouseButton_Left)) frame.memory.keys_navigate = false;
    const Modifier modifier = modifier_now();
    const bool taken = io.WantTextInput || (frame.memory.keys_navigate && modifier == kNone);
    for (const Key& key : kKeys) {
        if (key.modifier != modifier || (taken && !key.while_typing)) continue;
        if (ImGui::IsKeyPressed(key.code, key.repeats)) key.act(frame);
    }
}

void keys_window(PanelFrame& frame) {
    if (frame.memory.shows_keys && !ImGui::IsPopupOpen("Keys##window")) ImGui::OpenPopup("Keys##window");
    if (!ImGui::BeginPopupModal("Keys##window", &frame.memory.shows_keys, ImGuiWindowFlags_AlwaysAutoResize)) return;
    if (ImGui::BeginTable("keys", 2, ImGuiTableFlags_SizingFixedFit)) {
        for (const Key& key : kKeys) {
            ImGui::TableNextColumn();
            ImGui::TextUnformatted(key.name);
            ImGui::TableNextColumn();
            ImGui::TextUnformatted(key.what);
        }
        ImGui::EndTable();
    }
    ImGui::Separator();
    ImGui::TextUnformatted("Numbers: drag to change, Alt is fine, Shift is coarse, Ctrl+click to type.");
    ImGui::TextUnformatted("Picture: drag to turn, Shift+drag or the middle button to move, wheel to approach.");
    if (ImGui::Button("Close") || ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape))) {
        frame.memory.shows_keys = false;
        ImGui::CloseCurrentPopup();
    }
    mark(frame.targets, "keys.close");
    ImGui::EndPopup();
}

}  // namespace tovu
