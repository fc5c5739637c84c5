#include "actions.h"

#include <algorithm>

namespace tovu {

int64_t shown_frame(const PanelFrame& frame) {
    return std::max<int64_t>(frame.studio.report.frame, 0);
}

void save(PanelFrame& frame) {
    if (frame.studio.document && frame.studio.document->file.empty())
        frame.memory.shows_save_as = true;
    else
        frame.commands.push_back(Save{});
}

void toggle_view(PanelFrame& frame, bool ViewOrders::*field) {
    ViewOrders view = frame.studio.orders.view;
    view.*field = !(view.*field);
    frame.commands.push_back(SetView{view});
}

void take_scene_camera(PanelFrame& frame) {
    ViewOrders view = frame.studio.orders.view;
    view.camera.reset();
    frame.commands.push_back(SetView{view});
}

void toggle_loop(PanelFrame& frame) {
    frame.commands.push_back(SetLoop{!frame.studio.orders.loop, frame.studio.orders.range});
}

void begin_range(PanelFrame& frame) {
    const int64_t now = shown_frame(frame);
    frame.commands.push_back(SetLoop{true, {now, std::max(now, frame.studio.orders.range.last)}});
}

void end_range(PanelFrame& frame) {
    const int64_t now = shown_frame(frame);
    frame.commands.push_back(SetLoop{true, {std::min(frame.studio.orders.range.first, now), now}});
}

void toggle_numbers(PanelFrame& frame) {
    frame.memory.shows_numbers = !shows_numbers(frame.memory, ImGui::GetIO().DisplaySize.x);
}

}  // namespace tovu
