// The keyboard: one table of keys and actions, used for key presses and for the window that lists the keys.
#include <SDL.h>
#include <imgui_internal.h>

#include "actions.h"
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
    bool while_typing = false;  // works also while a text field has the keyboard
    bool repeats = false;       // repeats while the key is held
};

void focus_next_panel(PanelFrame& frame) {
    constexpr const char* kPanels[] = {"Gallery", "Parameters", "Transport", "Top",
                                       "Picture", "Warnings",   "Numbers",   "Export"};
    PanelMemory& memory = frame.memory;
    size_t next = memory.keys_navigate ? memory.key_panel + 1 : 0;
    for (size_t tried = 0; tried < IM_ARRAYSIZE(kPanels); ++tried, ++next) {
        memory.key_panel = next % IM_ARRAYSIZE(kPanels);
        ImGuiWindow* window = ImGui::FindWindowByName(kPanels[memory.key_panel]);
        if (window == nullptr || !window->WasActive) continue;
        memory.keys_navigate = true;
        ImGui::FocusWindow(window);
        ImGui::NavInitWindow(window, true);
        GImGui->NavDisableHighlight = false;
        return;
    }
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
    {SDL_SCANCODE_SPACE, kNone, "Space", "Play or pause",
     [](PanelFrame& f) { f.commands.push_back(SetPlaying{!f.studio.orders.playing}); }},
    {SDL_SCANCODE_RIGHT, kNone, "Right", "One frame on",
     [](PanelFrame& f) { f.commands.push_back(Seek{shown_frame(f) + 1}); }, false, true},
    {SDL_SCANCODE_LEFT, kNone, "Left", "One frame back",
     [](PanelFrame& f) { f.commands.push_back(Seek{shown_frame(f) - 1}); }, false, true},
    {SDL_SCANCODE_HOME, kNone, "Home", "To the start", [](PanelFrame& f) { f.commands.push_back(Seek{0}); }},
    {SDL_SCANCODE_END, kNone, "End", "To the end",
     [](PanelFrame& f) { f.commands.push_back(Seek{scene_frames(f.studio) - 1}); }},
    {SDL_SCANCODE_L, kNone, "L", "Loop on or off", toggle_loop},
    {SDL_SCANCODE_I, kNone, "I", "The loop begins here", begin_range},
    {SDL_SCANCODE_O, kNone, "O", "The loop ends here", end_range},
    {SDL_SCANCODE_S, kNone, "S", "Safe areas", [](PanelFrame& f) { f.memory.safe_areas = !f.memory.safe_areas; }},
    {SDL_SCANCODE_F, kNone, "F", "Forces", [](PanelFrame& f) { toggle_view(f, &ViewOrders::forces); }},
    {SDL_SCANCODE_B, kNone, "B", "Bounds", [](PanelFrame& f) { toggle_view(f, &ViewOrders::boxes); }},
    {SDL_SCANCODE_A, kNone, "A", "On air", [](PanelFrame& f) { toggle_view(f, &ViewOrders::on_air); }},
    {SDL_SCANCODE_N, kNone, "N", "Numbers and warnings", toggle_numbers},
    {SDL_SCANCODE_C, kNone, "C", "The scene's camera", take_scene_camera},
    {SDL_SCANCODE_F6, kNone, "F6", "To the next panel; Esc leaves it", focus_next_panel, true},
    {SDL_SCANCODE_F, kControl, "Ctrl+F", "Search for a parameter", [](PanelFrame& f) { f.memory.wants_search = true; },
     true},
    {SDL_SCANCODE_Z, kControl, "Ctrl+Z", "Undo", [](PanelFrame& f) { f.commands.push_back(Undo{}); }, false, true},
    {SDL_SCANCODE_Y, kControl, "Ctrl+Y", "Redo", [](PanelFrame& f) { f.commands.push_back(Redo{}); }, false, true},
    {SDL_SCANCODE_Z, kControlShift, "Ctrl+Shift+Z", "Redo", [](PanelFrame& f) { f.commands.push_back(Redo{}); }, false,
     true},
    {SDL_SCANCODE_F2, kNone, "F2", "The other state, A or B",
     [](PanelFrame& f) {
         if (f.studio.document) f.commands.push_back(ShowState{1 - f.studio.document->shown});
     }},
    {SDL_SCANCODE_O, kControl, "Ctrl+O", "Open", [](PanelFrame& f) { f.memory.shows_open = true; }, true},
    {SDL_SCANCODE_S, kControl, "Ctrl+S", "Save", save, true},
    {SDL_SCANCODE_S, kControlShift, "Ctrl+Shift+S", "Save as",
     [](PanelFrame& f) { f.memory.shows_save_as = f.studio.document.has_value(); }, true},
    {SDL_SCANCODE_E, kControl, "Ctrl+E", "Export",
     [](PanelFrame& f) { f.memory.shows_export = f.memory.keys_navigate = f.studio.document.has_value(); }, true},
    {SDL_SCANCODE_F1, kNone, "F1", "Gallery", [](PanelFrame& f) { f.commands.push_back(ShowGallery{}); }, true},
    {SDL_SCANCODE_F11, kNone, "F11", "The picture alone, in full screen",
     [](PanelFrame& f) { f.commands.push_back(SetFullscreen{!f.studio.fullscreen}); }, true},
    {SDL_SCANCODE_ESCAPE, kNone, "Esc", "Stop, close or leave", leave, true},
    {SDL_SCANCODE_EQUALS, kControl, "Ctrl+=", "Larger type",
     [](PanelFrame& f) { f.commands.push_back(SetTextSize{f.studio.text_size * 1.1f}); }, true},
    {SDL_SCANCODE_MINUS, kControl, "Ctrl+-", "Smaller type",
     [](PanelFrame& f) { f.commands.push_back(SetTextSize{f.studio.text_size / 1.1f}); }, true},
    {SDL_SCANCODE_Q, kControl, "Ctrl+Q", "End the studio", [](PanelFrame& f) { f.commands.push_back(Quit{}); }, true},
};

Modifier modifier_now() {
    const ImGuiIO& io = ImGui::GetIO();
    if (!io.KeyCtrl) return kNone;
    return io.KeyShift ? kControlShift : kControl;
}

// Lists the keys in two columns, each from top to bottom.
void list_keys() {
    constexpr size_t kRows = (IM_ARRAYSIZE(kKeys) + 1) / 2;
    if (!ImGui::BeginTable("keys", 4, ImGuiTableFlags_SizingFixedFit)) return;
    for (size_t i = 0; i < 2 * kRows; ++i) {
        const size_t place = i / 2 + i % 2 * kRows;
        const bool is_key = place < IM_ARRAYSIZE(kKeys);
        ImGui::TableNextColumn();
        ImGui::TextDisabled("%s", is_key ? kKeys[place].name : "");
        ImGui::TableNextColumn();
        ImGui::TextUnformatted(is_key ? kKeys[place].what : "");
    }
    ImGui::EndTable();
}

// A line about the mouse.
void describe(const char* where, const char* what) {
    ImGui::TextDisabled("%s", where);
    ImGui::SameLine(ImGui::GetFontSize() * 6.0f);
    ImGui::TextUnformatted(what);
}

}  // namespace

bool keys_navigate(const Studio& studio, const PanelMemory& memory) {
    const bool in_popup = ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopupId | ImGuiPopupFlags_AnyPopupLevel);
    return memory.keys_navigate || in_popup || studio.page == Page::kGallery;
}

void take_keys(PanelFrame& frame) {
    const ImGuiIO& io = ImGui::GetIO();
    const bool in_popup = ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopupId | ImGuiPopupFlags_AnyPopupLevel);
    if (in_popup) return;
    if (ImGui::IsMouseClicked(ImGuiMouseButton_Left)) frame.memory.keys_navigate = false;
    const Modifier modifier = modifier_now();
    const bool taken = io.WantTextInput || (modifier == kNone && keys_navigate(frame.studio, frame.memory));
    for (const Key& key : kKeys) {
        if (key.modifier != modifier || (taken && !key.while_typing)) continue;
        if (ImGui::IsKeyPressed(key.code, key.repeats)) key.act(frame);
    }
}

void keys_window(PanelFrame& frame) {
    if (frame.memory.shows_keys && !ImGui::IsPopupOpen("Keys##window")) ImGui::OpenPopup("Keys##window");
    if (!ImGui::BeginPopupModal("Keys##window", &frame.memory.shows_keys, ImGuiWindowFlags_AlwaysAutoResize)) return;
    list_keys();
    ImGui::Separator();
    describe("Panels", "In a panel that F6 chose, arrows, Tab, Space and Enter work");
    describe("Values", "Drag to change, with Alt finely, with Shift in large steps; click to type");
    describe("Picture", "Drag to turn, with Shift to move, wheel to come closer");
    ImGui::Spacing();
    if (ImGui::Button("Close") || ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape))) {
        frame.memory.shows_keys = false;
        ImGui::CloseCurrentPopup();
    }
    ImGui::SetItemDefaultFocus();
    mark(frame.targets, "keys.close");
    ImGui::EndPopup();
}

}  // namespace tovu
