// A line of the parameter panel: label, value and reset button.
#pragma once

#include <functional>

#include "panels.h"

namespace tovu {

struct LineShown {
    std::string target;        // name of the value in scripts: "parameter.birth_rate"
    std::string label;         // of the value
    std::string change;        // label of the step of undo
    bool is_written = false;   // the document sets the value
    bool is_idle = false;      // the value has no effect; the line is dimmed
    bool takes_width = false;  // the value is below the label and takes the whole width
    bool wants_focus = false;  // give the value the keyboard focus
    bool is_highlighted = false;
};

struct LineEvents {
    bool shows_help = false;  // the line is the latest one under the mouse or with the keyboard focus
    bool used = false;        // the line was clicked, or its value has the keyboard focus
    bool reset = false;       // the reset button was pressed
};

/// Draws the line. field: draws the value with a width in pixels. In a narrow panel all values are below their labels.
LineEvents panel_line(PanelFrame& frame, const LineShown& line, const std::function<void(float width)>& field);

/// The header of a group of lines. opens: whether the group is open at first. Returns whether it is open now.
bool group_header(PanelFrame& frame, const std::string& title, bool opens = false);

/// Sets the help text at the foot of the panel. It stays until another line is pointed at.
void show_help(PanelMemory& memory, const std::string& target, const std::string& title, const std::string& text);

}  // namespace tovu
