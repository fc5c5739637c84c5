// Shared by the editors of points: the drawing area, the mouse, the row of buttons. Depends on ImGui only.
// ImGui's storage holds the state under the ID of the editor, which must be on the ID stack.
#pragma once

#include <imgui.h>

#include <optional>
#include <span>

namespace widgets {

/// A drawing area that takes the mouse and the keyboard focus. A margin around the drawing makes points at the edges
/// clickable.
struct Canvas {
    ImVec2 low;  // left, top of the drawing: pixels
    ImVec2 size;
    bool hovered = false;
    bool focused = false;
    bool active = false;  // a mouse button was pressed on it and is still held
};

enum class PointEvent { kNone, kMove, kAdd, kRemove };

struct PointAction {
    PointEvent event = PointEvent::kNone;
    int index = 0;                // the point to move or remove, or the point before a new one
    std::optional<ImVec2> place;  // pixels, of a moved or new point; none: half-way between neighbours
};

/// Reserves `size` for the drawing with its margins, and fills the background.
Canvas begin_canvas(const ImVec2& size);

/// Draws bars of equal widths, with heights relative to the highest.
void draw_histogram(const Canvas& canvas, std::span<const float> histogram);

/// The action of mouse and keys on points at the given places, in pixels. A click chooses a point.
PointAction point_action(const Canvas& canvas, std::span<const ImVec2> places);

/// The index of the chosen point, 0…count-1.
int chosen_point(int count);

/// Chooses a point that was added, and lets the held mouse button drag it.
void take_added_point(int index);

/// Buttons that choose a point, add one after the chosen one, or remove the chosen one. can_remove: enough points would
/// remain.
PointAction point_buttons(int count, bool can_remove);

/// A label. The field follows on the same line.
void field_label(const char* label);

/// A field for a number that is dragged or typed. Clamps it to low…high. Returns whether it changed.
bool number_field(const char* label, double& value, double low, double high);

/// Rounds to three decimals, the precision of points.
double rounded(double value);

}  // namespace widgets
