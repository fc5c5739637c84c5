// The panel with playback and the scene's timeline.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "actions.h"
#include "panels.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

constexpr double kSpeeds[] = {0.1, 0.25, 0.5, 1.0, 2.0};

// Converts between frames and positions on the bar.
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

// The seconds between two marks: a round number that leaves room for their texts.
double mark_step(double seconds, float width) {
    const double least = seconds * static_cast<double>(ImGui::GetFontSize() * 5.0f / std::max(width, 1.0f));
    for (const double step : {0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 30.0, 60.0, 120.0, 300.0, 600.0})
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
    widgets::tip("Speed of playing; the smoke itself stays the same");
    ImGui::SameLine();
}

void range_buttons(PanelFrame& frame) {
    const PlayOrders& orders = frame.studio.orders;
    const int64_t last = scene_frames(frame.studio) - 1;
    tool_gap();
    if (tool_button(frame, "Loop", "Plays the range again and again (L)", {.is_on = orders.loop})) toggle_loop(frame);
    if (tool_button(frame, "In", "The range begins here (I)")) begin_range(frame);
    if (tool_button(frame, "Out", "The range ends here (O)")) end_range(frame);
    if (!plays_whole_scene(frame.studio) && tool_button(frame, "All", "The range is the whole scene"))
        frame.commands.push_back(SetLoop{orders.loop, {0, last}});
}

void play_buttons(PanelFrame& frame, int64_t now) {
    const bool playing = frame.studio.orders.playing;
    const float width = std::max(button_width("Play"), button_width("Pause"));
    if (tool_button(frame, playing ? "Pause" : "Play", "Plays or pauses (Space)", {.width = width}))
        frame.commands.push_back(SetPlaying{!playing});
    if (tool_button(frame, "|<", "To the start (Home)")) frame.commands.push_back(Seek{0});
    if (tool_button(frame, "<", "One frame back (Left)")) frame.commands.push_back(Seek{now - 1});
    if (tool_button(frame, ">", "One frame on (Right)")) frame.commands.push_back(Seek{now + 1});
    if (tool_button(frame, ">|", "To the end (End)")) frame.commands.push_back(Seek{scene_frames(frame.studio) - 1});
}

std::string time_text(const Studio& studio, int64_t frame) {
    return fmt::format("{:.2f} s   frame {} of {}", static_cast<double>(frame) / studio.scene->frame_rate, frame,
                       scene_frames(studio));
}

// Shows the time in the width of the last frame's time, so that nothing moves as the time changes.
void show_time(const Studio& studio, int64_t now) {
    const float left = ImGui::GetCursorPosX();
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted(time_text(studio, now).c_str());
    const float width = ImGui::CalcTextSize(time_text(studio, scene_frames(studio)).c_str()).x;
    ImGui::SameLine(left + width + ImGui::GetFontSize() * 1.25f);
}

// Shows why the picture is not live.
void show_lateness(const Studio& studio) {
    const PlayReport& report = studio.report;
    const double rate = studio.scene->frame_rate * studio.orders.speed;
    const auto show_low = [&](double per_second, const char* what, const char* reason) {
        if (!studio.orders.playing || per_second <= 0 || per_second >= 0.9 * rate) return false;
        const std::string text = fmt::format("Late: {} {:.0f} of {:.0f} frames a second", what, per_second, rate);
        fitted_text(text, ImGui::GetContentRegionAvail().x, kWarning);
        widgets::tip(fmt::format("{}. {}", text, reason));
        return true;
    };
    if (!show_low(report.run_per_second, "plays", "The simulation is slower than live.") &&
        !show_low(report.shown_per_second, "shows", "Drawing is slower than live. Every frame is simulated."))
        ImGui::NewLine();
}

void play_state(PanelFrame& frame) {
    const PlayReport& report = frame.studio.report;
    if (!report.seeking || report.seek_seconds <= 0.25) return show_lateness(frame.studio);
    const std::string text = fmt::format("Simulating {:.0f} %", report.seek_share * 100.0f);
    ImGui::ProgressBar(report.seek_share, {ImGui::GetFontSize() * 9.0f, 0}, text.c_str());
    ImGui::SameLine();
    if (tool_button(frame, "Stop here", "Shows the frame that was reached (Esc)"))
        frame.commands.push_back(CancelSeek{});
    ImGui::NewLine();
}

}  // namespace

void transport_panel(PanelFrame& frame, const Area& area) {
    begin_panel("Transport", area, false);
    const Studio& studio = frame.studio;
    if (studio.scene) {
        const int64_t now = shown_frame(frame);
        play_buttons(frame, now);
        range_buttons(frame);
        tool_gap();
        speed_choice(frame);
        tool_gap();
        show_time(studio, now);
        play_state(frame);
        timeline(frame);
    }
    ImGui::End();
}

}  // namespace tovu
