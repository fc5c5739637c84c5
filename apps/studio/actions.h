// Actions that keys and buttons share.
#pragma once

#include "panels.h"

namespace tovu {

/// The number of the shown frame, at least 0.
int64_t shown_frame(const PanelFrame& frame);

/// Saves the document, or opens "Save as" if the document has no file.
void save(PanelFrame& frame);

/// Turns one of the view's switches on or off.
void toggle_view(PanelFrame& frame, bool ViewOrders::*field);

/// Returns the view to the scene's camera.
void take_scene_camera(PanelFrame& frame);

/// Turns the loop on or off.
void toggle_loop(PanelFrame& frame);

/// Begins or ends the looped range at the shown frame, and turns the loop on.
void begin_range(PanelFrame& frame);
void end_range(PanelFrame& frame);

/// Shows or hides the column of numbers and warnings.
void toggle_numbers(PanelFrame& frame);

}  // namespace tovu
