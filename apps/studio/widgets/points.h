// What editors of points share: the drawing area, the mouse, the row of buttons. ImGui only.
// State is kept in ImGui's storage under the ID of the editor, which must be on the ID stack.
#pragma once

#include <imgui.h>

#include <optional>
#include <span>

namespace widgets {

/// A part of the window that takes the mouse and the keyboard's focus. Around the drawing it has a margin, so that
/// points at the edges can be clicked.
struct Canvas {
    ImVec2 low;  // left, top of the drawing: pixels
    ImVec2 size;
    bool hovered = false;
    bool focused = false;
    bool active = false;  // a mouse button is held that was pressed on it
};

enum class PointEvent { kNone, kMove, kAdd, kRemove };

struct PointAction {
    PointEvent event = PointEvent::kNone;
    int index = 0;                // of the point to move or to remove, or that a new one comes after
    std::optional<ImVec2> place;  // pixels, where to move a point or to add one; none: between its neighbours
};

/// Takes room for the drawing with its margins, `size` in all, and fills the background.
Canvas begin_canvas(const ImVec2& size);

/// Bars that share the width evenly, relative to the highest.
void draw_histogram(const Canvas& canvas, std::span<const float> histogram);

/// What the mouse and the keys do to points at these places. A click chooses a point.
PointAction point_action(const Canvas& canvas, std::span<const ImVec2> places);

/// The chosen point, 0…count-1.
int chosen_point(int count);

/// Chooses a point that was added, and lets the held mouse button drag it.
void take_added_point(int index);

/// Buttons to choose a point, add one behind the chosen one and remove it. can_remove: there are enough.
PointAction point_buttons(int count, bool can_remove);

/// The label of a field that stands behind it on the same line.
void field_label(const char* label);

/// A number in a field that is dragged or typed into; held between low and high. Returns whether it changed.
bool number_field(const char* label, double& value, double low, double high);

/// Rounds to the three decimals that points have.
double rounded(double value);

}  // namespace widgets
