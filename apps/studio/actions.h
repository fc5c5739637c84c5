// What a key does as well as a button.
#pragma once

#include "panels.h"

namespace tovu {

/// The frame that is shown, at least 0.
int64_t shown_frame(const PanelFrame& frame);

/// Saves the document, or asks for a name when it has none.
void save(PanelFrame& frame);

/// Turns one of the view's switches on or off.
void toggle_view(PanelFrame& frame, bool ViewOrders::*field);

/// Looks through the scene's camera again.
void take_scene_camera(PanelFrame& frame);

/// Turns the loop on or off.
void toggle_loop(PanelFrame& frame);

/// Loops from, or to, the frame that is shown.
void begin_range(PanelFrame& frame);
void end_range(PanelFrame& frame);

/// Shows or hides the column of numbers and warnings.
void toggle_numbers(PanelFrame& frame);

}  // namespace tovu
