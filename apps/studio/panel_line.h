// A line of the parameter panel: label, value, and a button that takes a change back.
#pragma once

#include <functional>

#include "panels.h"

namespace tovu {

struct LineShown {
    std::string target;        // what scripts call the value: "parameter.birth_rate"
    std::string label;         // of the value
    std::string change;        // label of the step of undo
    bool is_written = false;   // the document gives the value
    bool is_idle = false;      // the value has no effect: dimmed
    bool takes_width = false;  // the value has a line of its own, below its label
    bool wants_focus = false;  // the keyboard goes to the value
    bool is_highlighted = false;
};

struct LineEvents {
    bool shows_help = false;  // the mouse or the keyboard is on the line, or was on it last
    bool used = false;        // it was clicked, or the keyboard is on its value
    bool reset = false;       // the change is to be taken back
};

/// Draws the line. field: draws the value, of the width that it is given. In a narrow panel all values have lines of
/// their own.
LineEvents panel_line(PanelFrame& frame, const LineShown& line, const std::function<void(float width)>& field);

/// The header of a group of lines. opens: the group is open at first. Returns whether it is open.
bool group_header(PanelFrame& frame, const std::string& title, bool opens = false);

/// What the panel's foot shows: what a line is about. It stays until another one is pointed at.
void show_help(PanelMemory& memory, const std::string& target, const std::string& title, const std::string& text);

}  // namespace tovu
