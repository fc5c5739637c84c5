// The panel with the numbers of particles and the times of a frame.
#include <fmt/format.h>
#include <imgui.h>
#include <imgui_internal.h>

#include <algorithm>
#include <string>
#include <vector>

#include "panels.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

constexpr ImU32 kStepColor = IM_COL32(108, 178, 242, 255);
constexpr ImU32 kDrawColor = IM_COL32(150, 210, 130, 255);
constexpr ImU32 kPictureColor = IM_COL32(120, 125, 135, 255);

// A line for each container. The numbers come first, since a long name is cut off. A tip shows more.
void show_particles(const ParticleCounts& counts) {
    const std::string text = counts.limit > 0
                                 ? fmt::format("{} of {}  {}", counts.alive, counts.limit, counts.container)
                                 : fmt::format("{}  {}", counts.alive, counts.container);
    const float share = counts.limit > 0 ? static_cast<float>(counts.alive) / static_cast<float>(counts.limit) : 0.0f;
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const ImVec2 size{ImGui::GetContentRegionAvail().x, ImGui::GetTextLineHeight() * 1.25f};
    ImGui::ProgressBar(share, size, "");
    widgets::tip(fmt::format("{}: {} particles live, {:.0f} are born a second", counts.container, counts.alive,
                             counts.births_per_second));
    const float inset = ImGui::GetStyle().FramePadding.x, right = start.x + size.x - inset;
    const float top = start.y + (size.y - ImGui::GetFontSize()) / 2;
    ImGui::RenderTextEllipsis(ImGui::GetWindowDrawList(), {start.x + inset, top}, {right, start.y + size.y}, right,
                              right, text.c_str(), nullptr, nullptr);
    if (counts.lost_per_second >= 0.5)
        ImGui::TextColored(ImColor(kWarning), "%.0f births a second are lost", counts.lost_per_second);
}

// The top of the graph. 19 of 20 pictures fit, so that one slow picture does not flatten the others.
double graph_top_ms(const std::deque<FrameNumbers>& numbers, double budget_ms) {
    std::vector<double> sums;
    for (const FrameNumbers& n : numbers) sums.push_back(n.step_ms + n.plugin_draw_ms + n.picture_ms);
    const auto place = sums.begin() + static_cast<std::ptrdiff_t>((sums.size() - 1) * 19 / 20);
    std::nth_element(sums.begin(), place, sums.end());
    return std::max(1.5 * budget_ms, 1.1 * *place);
}

// A column for each picture: step, drawing by plug-ins, and the rest of the time until the picture is in memory.
void draw_graph(const Studio& studio, double budget_ms) {
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const ImVec2 size{ImGui::GetContentRegionAvail().x, ImGui::GetFontSize() * 5.0f};
    ImGui::Dummy(size);
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(start, {start.x + size.x, start.y + size.y}, kWell, 4.0f);
    const double most = graph_top_ms(studio.numbers, budget_ms);
    const float column = size.x / static_cast<float>(kKeptNumbers);
    float x = start.x + size.x - column * static_cast<float>(studio.numbers.size());
    for (const FrameNumbers& n : studio.numbers) {
        double below = 0;
        for (const auto& [ms, color] :
             {std::pair{n.step_ms, kStepColor}, {n.plugin_draw_ms, kDrawColor}, {n.picture_ms, kPictureColor}}) {
            const float bottom = start.y + size.y * static_cast<float>(1.0 - below / most);
            below += ms;
            const float top = start.y + size.y * static_cast<float>(1.0 - below / most);
            list->AddRectFilled({x, std::max(top, start.y)}, {x + std::max(1.0f, column), std::max(bottom, start.y)},
                                color);
        }
        x += column;
    }
    const float y = start.y + size.y * static_cast<float>(1.0 - budget_ms / most);
    list->AddLine({start.x, y}, {start.x + size.x, y}, kDim);
    const std::string budget = fmt::format("Budget {:.0f} ms", budget_ms);
    list->AddText({start.x + 4, y - ImGui::GetFontSize() * 1.1f}, kDim, budget.c_str());
}

// A line with a time. color: of the square before the name; 0: no square. what: the tip.
void number(const std::string& name, double ms, const std::string& what, ImU32 color = 0) {
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const float size = ImGui::GetFontSize(), width = ImGui::GetContentRegionAvail().x;
    const std::string text = fmt::format("{:.2f} ms", ms);
    const float right = start.x + width - ImGui::CalcTextSize(text.c_str()).x;
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled({start.x, start.y + size * 0.25f}, {start.x + size * 0.5f, start.y + size * 0.75f}, color,
                        2.0f);
    ImGui::Dummy({width, size});
    widgets::tip(what);
    list->PushClipRect(start, {right, start.y + size * 1.5f}, true);
    list->AddText({start.x + size * 0.8f, start.y}, kDim, name.c_str());
    list->PopClipRect();
    list->AddText({right, start.y}, ImGui::GetColorU32(ImGuiCol_Text), text.c_str());
}

// The mean of the numbers of all pictures in the graph.
FrameNumbers mean_numbers(const std::deque<FrameNumbers>& all) {
    FrameNumbers mean;
    const size_t count = std::min<size_t>(all.size(), 25);
    for (size_t i = all.size() - count; i < all.size(); ++i) {
        mean.step_ms += all[i].step_ms / static_cast<double>(count);
        mean.plugin_draw_ms += all[i].plugin_draw_ms / static_cast<double>(count);
        mean.picture_ms += all[i].picture_ms / static_cast<double>(count);
        mean.other_ms += all[i].other_ms / static_cast<double>(count);
    }
    mean.sections = all.back().sections;
    return mean;
}

void show_times(const Studio& studio) {
    const FrameNumbers mean = mean_numbers(studio.numbers);
    number("Simulation", mean.step_ms, "Moving the particles of all plug-ins", kStepColor);
    number("Plug-in drawing", mean.plugin_draw_ms,
           "The plug-ins' part of drawing, with the time that OpenGL lets them wait. A renderer in software draws in "
           "this time; a graphics card draws beside it.",
           kDrawColor);
    for (const SectionTime& section : mean.sections)
        number("   " + section.name, section.ms, "A part that the plug-in measures, under the plug-in's own name");
    number("OpenGL", mean.picture_ms, "The rest of drawing, until the picture is in memory", kPictureColor);
    number("Studio", studio.studio_ms + mean.other_ms, "The panels of this window");
    number("Window", studio.window_ms, "OpenGL for this window");
}

}  // namespace

void numbers_panel(PanelFrame& frame, const Area& area, const std::string& renderer) {
    begin_panel("Numbers", area);
    const Studio& studio = frame.studio;
    if (!studio.scene || studio.numbers.empty()) {
        ImGui::End();
        return;
    }
    ImGui::TextDisabled("Live particles");
    if (studio.report.drawn)
        for (const ParticleCounts& counts : studio.report.drawn->particles) show_particles(counts);
    ImGui::Spacing();
    ImGui::TextDisabled("Time of a frame");
    const double budget_ms = 1000.0 / studio.scene->frame_rate;
    draw_graph(studio, budget_ms);
    mark(frame.targets, "numbers");
    show_times(studio);
    const FrameNumbers mean = mean_numbers(studio.numbers);
    const double smoke_ms = mean.step_ms + mean.plugin_draw_ms;
    if (smoke_ms > budget_ms) ImGui::TextColored(ImColor(kWarning), "%.1f ms over the budget", smoke_ms - budget_ms);
    fitted_text(renderer, ImGui::GetContentRegionAvail().x, kDim);
    widgets::tip("OpenGL is drawn by " + renderer);
    ImGui::End();
}

}  // namespace tovu
