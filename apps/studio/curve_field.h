// A curve's text as a picture: points or colour stops that are dragged, and the text itself.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "stage/scenefile/curve_format.h"

namespace tovu {

/// What is shown with a curve.
struct CurveShown {
    const stage::CurveFormat& format;
    std::span<const double> sampled;  // the curve as the plug-in made it, numbers as in the text; empty: straight lines
    std::span<const float> histogram;  // what to show behind it: heights of bars of one width; empty: nothing
};

/// Curves of one component are points, those of three are colours; of others there is only the text. A text that is no
/// curve shows what is wrong with it. width: pixels.
/// Returns the new text when it was changed, at every step of a drag and every typed letter. All is one ImGui group,
/// whose activation brackets an edit.
std::optional<std::string> curve_field(const std::string& text, const CurveShown& shown, float width);

}  // namespace tovu
