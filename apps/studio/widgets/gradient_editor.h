// An editor for a gradient with draggable colour stops. Depends on ImGui only.
#pragma once

#include <imgui.h>

#include <array>
#include <span>
#include <vector>

namespace widgets {

struct GradientStop {
    double x = 0.0;                          // 0…1
    std::array<float, 3> color = {1, 1, 1};  // red, green, blue, 0…1
};

/// Draws `histogram` above the gradient, with bars of equal widths and heights relative to the highest, and the stops
/// below it. Before the first stop and after the last one the gradient is black. Below the drawing are fields for the
/// chosen stop, with a colour picker. A drag moves a stop between its neighbours, a double click adds one with the
/// colour at that place, a right click or Delete removes one; at least two remain. Two stops at the same place make a
/// step. size: of the drawing with its margins, pixels. Returns whether the stops changed. The editor is one ImGui
/// group, which is active during an edit.
bool gradient_editor(const char* id, std::vector<GradientStop>& stops, std::span<const float> histogram,
                     const ImVec2& size);

}  // namespace widgets
