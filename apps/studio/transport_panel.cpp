// Playing, and the scene's timeline.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "panels.h"
#include "theme.h"

namespace tovu {

namespace {

constexpr double kSpeeds[] = {0.1, 0.25, 0.5, 1.0, 2.0};

// Frame, or time, along the bar.
struct Scale {
    float left, width;
    int64_t frames;  // of the scene

    float at(double frame) const {
        return left + width * static_cast<float>(frame / static_cast<double>(std::max<int64_t>(frames - 1, 1)));
    }
    int64_t frame_at(float x) const {
        const double share = std::clamp(static_cast<double>(x - left) / static_cast<double>(width), 0.0, 1.0);
        return static_cast<int64_t>(std::lround(share * static_cast<double>(frames - 1)));
    }
};

// A round number of seconds between two marks, with room for their texts.
double mark_step(double seconds, float width) {
    const double least = seconds * static_cast<double>(ImGui::GetFontSize() * 3.0f / std::max(width, 1.0f));
    for (const double step : {0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 30.0, 60.0, 300.0, 600.0})
        if (step >= least) return step;
    return 3600.0;
}

void draw_seconds(const stage::SceneDescription& scene, const Scale& scale, float top, float bottom) {
    ImDrawList* list = ImGui::GetWindowDrawList();
    const double seconds = static_cast<double>(scale.frames) / scene.frame_rate;
    const double step = mark_step(seconds, scale.width);
    for (int i = 0; i * step < seconds; ++i) {
        const float x = scale.at(i * step * scene.frame_rate);
        list->AddLine({x, top}, {x, bottom}, kLine);
        const std::string text = fmt::format("{:.3g} s", i * step);
        if (x + ImGui::CalcTextSize(text.c_str()).x < scale.left + scale.width)
            list->AddText({x + 3.0f, bottom - ImGui::GetFontSize()}, kDim, text.c_str());
    }
}

void draw_events(const stage::SceneDescription& scene, const Scale& scale, float top) {
    const float size = ImGui::GetFontSize() * 0.25f;
    for (const stage::TimelineEntry& entry : scene.timeline) {
        const float x = scale.at(entry.time * scene.frame_rate);
        ImGui::GetWindowDrawList()->AddTriangleFilled({x - size, top}, {x + size, top}, {x, top + 1.5f * size},
                                                      kWarning);
    }
}

void timeline(PanelFrame& frame) {
    const Studio& studio = frame.studio;
    const ImVec2 size{ImGui::GetContentRegionAvail().x,
                      std::max(ImGui::GetContentRegionAvail().y, ImGui::GetFontSize())};
    const ImVec2 start = ImGui::GetCursorScreenPos();
    ImGui::InvisibleButton("timeline", size);
    mark(frame.targets, "timeline");
    const Scale scale{start.x, size.x, scene_frames(studio)};
    const float bottom = start.y + size.y;
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(start, {start.x + size.x, bottom}, kWell, 4.0f);
    const PlayOrders& orders = studio.orders;
    if (orders.loop)
        list->AddRectFilled({scale.at(static_cast<double>(orders.range.first)), start.y},
                            {scale.at(static_cast<double>(orders.range.last)), bottom}, IM_COL32(108, 178, 242, 34));
    draw_seconds(*studio.scene, scale, start.y, bottom);
    draw_events(*studio.scene, scale, start.y);
    const float x = scale.at(static_cast<double>(std::max<int64_t>(studio.report.frame, 0)));
    list->AddLine({x, start.y}, {x, bottom}, kAccent, 2.0f);
    if (ImGui::IsItemActive()) {
        const int64_t wanted = scale.frame_at(ImGui::GetIO().MousePos.x);
        if (wanted != studio.orders.seek_frame || ImGui::IsItemActivated()) frame.commands.push_back(Seek{wanted});
    }
}

void speed_choice(PanelFrame& frame) {
    ImGui::SetNextItemWidth(ImGui::GetFontSize() * 5.0f);
    const std::string now = fmt::format("{:g} ×", frame.studio.orders.speed);
    if (ImGui::BeginCombo("##speed", now.c_str())) {
        for (const double speed : kSpeeds)
            if (ImGui::Selectable(fmt::format("{:g} ×", speed).c_str(), speed == frame.studio.orders.speed))
                frame.commands.push_back(SetSpeed{speed});
        ImGui::EndCombo();
    }
    mark(frame.targets, "speed");
    if (ImGui::IsItemHovered()) ImGui::SetTooltip("speed of the clock; the smoke's time step stays");
    ImGui::SameLine();
}

void range_buttons(PanelFrame& frame) {
    const PlayOrders& orders = frame.studio.orders;
    const int64_t now = frame.studio.report.frame;
    const int64_t last = scene_frames(frame.studio) - 1;
    if (tool_button(frame, "Loop", "plays the range again and again (L)", orders.loop))
        frame.commands.push_back(SetLoop{!orders.loop, orders.range});
    if (tool_button(frame, "[", "the range begins here (I)"))
        frame.commands.push_back(SetLoop{true, {now, std::max(now, orders.range.last)}});
    if (tool_button(frame, "]", "the range ends here (O)"))
        frame.commands.push_back(SetLoop{true, {std::min(orders.range.first, now), now}});
    if ((orders.range.first != 0 || orders.range.last != last) &&
        tool_button(frame, "All", "the range is the whole scene"))
        frame.commands.push_back(SetLoop{orders.loop, {0, last}});
}

// What keeps the picture from being live.
void play_state(PanelFrame& frame) {
    const PlayReport& report = frame.studio.report;
    const double rate = frame.studio.scene->frame_rate * frame.studio.orders.speed;
    if (report.seeking && report.seek_seconds > 0.25) {
        ImGui::ProgressBar(report.seek_share, {ImGui::GetFontSize() * 10.0f, 0}, "running …");
        ImGui::SameLine();
        if (ImGui::Button("Stop here")) frame.commands.push_back(CancelSeek{});
        mark(frame.targets, "Stop here");
    } else if (frame.studio.orders.playing && report.run_per_second > 0 && report.run_per_second < 0.9 * rate) {
        ImGui::TextColored(ImColor(kWarning), "slower than live: %.0f of %.0f frames a second", report.run_per_second,
                           rate);
    } else if (frame.studio.orders.playing && report.shown_per_second > 0 && report.shown_per_second < 0.9 * rate) {
        ImGui::TextColored(ImColor(kWarning), "drawing is late: %.0f of %.0f frames a second are shown, all are run",
                           report.shown_per_second, rate);
    } else {
        ImGui::TextDisabled("last rerun %.0f ms", report.last_seek_ms);
    }
}

}  // namespace

void transport_panel(PanelFrame& frame, const Area& area) {
    begin_panel("Transport", area, false);
    const Studio& studio = frame.studio;
    if (!studio.scene) {
        ImGui::End();
        return;
    }
    const int64_t now = std::max<int64_t>(studio.report.frame, 0);
    if (tool_button(frame, studio.orders.playing ? "Pause" : "Play", "play or pause (Space)", studio.orders.playing))
        frame.commands.push_back(SetPlaying{!studio.orders.playing});
    if (tool_button(frame, "|<", "to the start (Home)")) frame.commands.push_back(Seek{0});
    if (tool_button(frame, "<", "one frame back (Left)")) frame.commands.push_back(Seek{now - 1});
    if (tool_button(frame, ">", "one frame on (Right)")) frame.commands.push_back(Seek{now + 1});
    range_buttons(frame);
    speed_choice(frame);
    ImGui::AlignTextToFramePadding();
    ImGui::Text("%.2f s   frame %lld of %lld", static_cast<double>(now) / studio.scene->frame_rate,
                static_cast<long long>(now), static_cast<long long>(scene_frames(studio)));
    ImGui::SameLine(0, ImGui::GetFontSize() * 1.5f);
    play_state(frame);
    timeline(frame);
    ImGui::End();
}

}  // namespace tovu
