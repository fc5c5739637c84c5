// Shared by all panels. Panels read the studio, return commands, and keep only the state of the user interface.
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

/// Places of items in the window, for scripts.
struct Targets {
    bool wanted = false;
    std::map<std::string, ImVec4> places;  // left, top, right, bottom: pixels of this frame
};

/// Names the item that ImGui drew last.
void mark(Targets& targets, const std::string& name);

enum class Backdrop { kScene, kCheckerboard, kColour, kPicture };

/// State of the window that opens files.
struct OpenChoice {
    std::filesystem::path folder;    // the listed folder; empty before the first
    std::vector<std::string> names;  // the list: folders, with a slash at the end, then scenes and looks
    std::string typed;               // content of the field: a name of the list or any path
    std::string shown;               // name that the list is scrolled to
    std::string mistake;             // why the typed file was not opened
    bool wants_focus = false;        // focus the field
};

/// State that panels keep between frames.
struct PanelMemory {
    // Parameters.
    std::string search;
    bool wants_search = false;  // focus the search field
    bool wants_value = false;   // focus the value that the search is for
    std::string help_target;    // target of the line that the help describes
    std::string help_title;
    std::string help;
    std::set<std::string> used_idle;  // parameters without effect that were used: they show what they need
    uint64_t states_revision = 0;
    const SceneFacts* states_facts = nullptr;
    std::string states_container;
    std::vector<ParameterStates> states;
    std::set<std::string> written_keys;  // keys of the container's table
    // Picture.
    Backdrop backdrop = Backdrop::kScene;
    std::array<float, 3> backdrop_color = {0.25f, 0.3f, 0.38f};
    bool safe_areas = false;
    float pivot_distance = 0;   // from the camera to the centre of the orbit; 0: not chosen yet
    float zoom = 1;             // of the picture on screen
    std::string backdrop_file;  // for Backdrop::kPicture
    // Keyboard.
    std::optional<bool> shows_numbers;  // the column of numbers and warnings; none: shown if the window is wide enough
    bool keys_navigate = false;         // F6 chose a panel
    size_t key_panel = 0;               // the panel that F6 chose last
    // Dialog windows.
    bool shows_keys = false;
    bool shows_open = false;
    OpenChoice open;
    bool shows_save_as = false;
    int shown_failed_saves = 0;  // value of Studio::failed_saves that the panels have handled
    std::string save_mistake;    // why saving failed, if that opened the window
    bool saves_look = false;     // saves a look, not the document
    std::string save_as;
    bool wants_save_name = false;            // focus the file name
    std::filesystem::path asked_to_replace;  // existing file that Enter was pressed for; Enter again replaces it
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

/// A part of the window, in pixels.
struct Area {
    float x, y, width, height;
};

/// Begins a panel that fills an area. End it with ImGui::End().
void begin_panel(const char* name, const Area& area, bool scrolls = true);

/// The proposed folder for a new file: the folder of the document's file, or the current folder if the document has no
/// file or its folder is not writable.
std::filesystem::path folder_for_files(const Document& document);

/// The path of a typed text: relative to `folder`, or to the user's home after "~/".
std::filesystem::path typed_path(const std::string& text, const std::filesystem::path& folder);

/// Makes all changes of the last item one step of undo, from the start of a drag or typing to its end. Call it after
/// the item.
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

/// Whether the column of numbers and warnings is shown in a window that is `width` pixels wide.
bool shows_numbers(const PanelMemory& memory, float width);

/// Whether ImGui takes arrows, Tab, Space and Enter: in a panel that F6 chose, in the gallery and in popups.
bool keys_navigate(const Studio& studio, const PanelMemory& memory);

/// Adds the commands of the keys that were pressed in this frame. Call it before the panels.
void take_keys(PanelFrame& frame);

struct ToolButton {
    bool is_on = false;  // drawn in the accent colour
    bool enabled = true;
    float width = 0;  // pixels; 0: fits the label
};

/// A button in a row of buttons. Begins a new row if the button does not fit. tip: what the button does. True when it
/// is pressed.
bool tool_button(PanelFrame& frame, const char* label, const std::string& tip, const ToolButton& button = {});

/// The main button of a dialog window.
bool main_button(const char* label);

/// A wider gap before the next button of a row.
void tool_gap();

/// The width of a button with this label, in pixels.
float button_width(const char* label);

/// Draws text on one line of `width` pixels. "…" replaces the part that does not fit.
void fitted_text(const std::string& text, float width, ImU32 color);

}  // namespace tovu
