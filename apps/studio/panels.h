// What all panels share: they read the studio, return commands, and keep only what ImGui needs between two frames.
#pragma once

#include <imgui.h>
#include <imgui_stdlib.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "parameter_states.h"
#include "studio.h"

namespace tovu {

/// Where things are in the window, for scripts.
struct Targets {
    bool wanted = false;
    std::map<std::string, ImVec4> places;  // left, top, right, bottom: pixels of this frame
};

/// Names the item that ImGui was told last.
void mark(Targets& targets, const std::string& name);

enum class Backdrop { kScene, kCheckerboard, kColour, kPicture };

/// Of the window that opens files.
struct OpenChoice {
    std::filesystem::path folder;    // whose list is shown; empty before the first
    std::vector<std::string> names;  // in it: folders, which end in a slash, then scenes and looks
    std::string typed;               // a name of the list, or any path
    std::string shown;               // the name that the list was scrolled to
    std::string mistake;             // why the typed one was not opened
    bool wants_focus = false;        // for the typed name
};

/// What panels keep between frames.
struct PanelMemory {
    // Parameters.
    std::string search;
    bool wants_search = false;  // focus the search field
    bool wants_value = false;   // focus the first value
    std::string help_target;    // of scripts, that the help is about
    std::string help_title;
    std::string help;
    std::set<std::string> used_idle;  // parameters without effect that say what they need
    uint64_t states_revision = 0;
    const SceneFacts* states_facts = nullptr;
    std::string states_container;
    std::vector<ParameterStates> states;
    std::set<std::string> written_keys;  // of the container
    // Picture.
    Backdrop backdrop = Backdrop::kScene;
    std::array<float, 3> backdrop_color = {0.25f, 0.3f, 0.38f};
    bool safe_areas = false;
    float pivot_distance = 0;   // of the orbit, from the camera; 0: not chosen yet
    float zoom = 1;             // of the picture on screen
    std::string backdrop_file;  // of the backdrop kPicture
    // Keyboard.
    std::optional<bool> shows_numbers;  // the column of numbers and warnings; none: where there is room
    bool keys_navigate = false;         // F6 chose a panel
    size_t key_panel = 0;               // that had the keyboard last
    // Windows over the others.
    bool shows_keys = false;
    bool shows_open = false;
    OpenChoice open;
    bool shows_save_as = false;
    int shown_failed_saves = 0;  // of the studio's
    std::string save_mistake;    // why saving failed, while the window is open for it
    bool saves_look = false;     // instead of the document
    std::string save_as;
    bool wants_save_name = false;            // focus it
    std::filesystem::path asked_to_replace;  // the file that Enter was pressed for: the next one replaces it
    std::string purpose;                     // of the look
    bool shows_export = false;
    bool exports_still = false;
    std::string export_file;
};

struct PanelFrame {
    const Studio& studio;
    PanelMemory& memory;
    Commands& commands;
    Targets& targets;
};

/// A part of the window, pixels.
struct Area {
    float x, y, width, height;
};

/// Begins a panel that fills an area. End with ImGui::End().
void begin_panel(const char* name, const Area& area, bool scrolls = true);

/// The folder to propose for a new file: that of the document's file, or the current one when it has none or cannot be
/// written to.
std::filesystem::path folder_for_files(const Document& document);

/// The path that a text means: from `folder`, or from the user's home behind "~/".
std::filesystem::path typed_path(const std::string& text, const std::filesystem::path& folder);

/// After an item that changes one thing by dragging or typing: begins and ends its step of undo.
void bracket_change(PanelFrame& frame, const std::string& label);

void top_bar(PanelFrame& frame, const Area& area);
void parameter_panel(PanelFrame& frame, const Area& area);
void transport_panel(PanelFrame& frame, const Area& area);
void numbers_panel(PanelFrame& frame, const Area& area, const std::string& renderer);
void warnings_panel(PanelFrame& frame, const Area& area);
void keys_window(PanelFrame& frame);
void open_window(PanelFrame& frame);
void save_as_window(PanelFrame& frame);
void export_window(PanelFrame& frame);

/// Whether the column of numbers and warnings is shown in a window of a width in pixels.
bool shows_numbers(const PanelMemory& memory, float width);

/// Whether arrows, Tab, Space and Enter work in ImGui's windows: in a panel that F6 chose, the gallery and popups.
bool keys_navigate(const Studio& studio, const PanelMemory& memory);

/// Commands of the keys that were pressed in this frame. Call it before the panels.
void take_keys(PanelFrame& frame);

struct ToolButton {
    bool is_on = false;  // in the accent's colour
    bool enabled = true;
    float width = 0;  // pixels; 0: the label's
};

/// A button in a row of them; one that does not fit begins another row. tip: what it does. True when it is pressed.
bool tool_button(PanelFrame& frame, const char* label, const std::string& tip, const ToolButton& button = {});

/// The button that does what a window is for.
bool main_button(const char* label);

/// A wider gap before the next button of a row.
void tool_gap();

/// The width of a button with this label, pixels.
float button_width(const char* label);

/// Text on one line of a width in pixels; "…" replaces what does not fit.
void fitted_text(const std::string& text, float width, ImU32 color);

}  // namespace tovu
