// What the smoke costs and how many particles live; what would surprise.
#include <fmt/format.h>
#include <imgui.h>
#include <imgui_internal.h>

#include <algorithm>
#include <sstream>

#include "panels.h"
#include "theme.h"

namespace tovu {

namespace {

constexpr ImU32 kStepColor = IM_COL32(108, 178, 242, 255);
constexpr ImU32 kDrawColor = IM_COL32(150, 210, 130, 255);
constexpr ImU32 kPictureColor = IM_COL32(120, 125, 135, 255);

// One line for each container, the numbers first: a long name is cut. More when pointed at.
void show_particles(const ParticleCounts& counts) {
    const std::string text = counts.limit > 0
                                 ? fmt::format("{} of {}  {}", counts.alive, counts.limit, counts.container)
                                 : fmt::format("{}  {}", counts.alive, counts.container);
    const float share = counts.limit > 0 ? static_cast<float>(counts.alive) / static_cast<float>(counts.limit) : 0.0f;
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const ImVec2 size{ImGui::GetContentRegionAvail().x, ImGui::GetTextLineHeight() * 1.25f};
    ImGui::ProgressBar(share, size, "");
    const float inset = ImGui::GetStyle().FramePadding.x;
    ImGui::RenderTextClipped({start.x + inset, start.y}, {start.x + size.x - inset, start.y + size.y}, text.c_str(),
                             nullptr, nullptr, {0, 0.5f});
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("%s: %d alive, %.0f births a second", counts.container.c_str(), counts.alive,
                          counts.births_per_second);
    if (counts.lost_per_second >= 0.5)
        ImGui::TextColored(ImColor(kWarning), "%.0f births a second are lost", counts.lost_per_second);
}

// A column for each picture: step, the plug-ins' drawing, everything else until the picture is in memory.
void draw_graph(const Studio& studio, double budget_ms) {
    const ImVec2 start = ImGui::GetCursorScreenPos();
    const ImVec2 size{ImGui::GetContentRegionAvail().x, ImGui::GetFontSize() * 5.0f};
    ImGui::Dummy(size);
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(start, {start.x + size.x, start.y + size.y}, kWell, 4.0f);
    double most = 1.5 * budget_ms;
    for (const FrameNumbers& n : studio.numbers) most = std::max(most, n.step_ms + n.plugin_draw_ms + n.picture_ms);
    const float column = size.x / static_cast<float>(kKeptNumbers);
    float x = start.x + size.x - column * static_cast<float>(studio.numbers.size());
    for (const FrameNumbers& n : studio.numbers) {
        double below = 0;
        for (const auto& [ms, color] :
             {std::pair{n.step_ms, kStepColor}, {n.plugin_draw_ms, kDrawColor}, {n.picture_ms, kPictureColor}}) {
            const float bottom = start.y + size.y * static_cast<float>(1.0 - below / most);
            below += ms;
            const float top = start.y + size.y * static_cast<float>(1.0 - below / most);
            list->AddRectFilled({x, top}, {x + std::max(1.0f, column), bottom}, color);
        }
        x += column;
    }
    const float y = start.y + size.y * static_cast<float>(1.0 - budget_ms / most);
    list->AddLine({start.x, y}, {start.x + size.x, y}, kWarning);
    list->AddText({start.x + 4, start.y + 2}, kDim, fmt::format("budget {:.0f} ms", budget_ms).c_str());
}

void number(const char* name, double ms, ImU32 color = 0) {
    if (color != 0) {
        const ImVec2 at = ImGui::GetCursorScreenPos();
        const float size = ImGui::GetFontSize();
        ImGui::GetWindowDrawList()->AddRectFilled({at.x, at.y + size * 0.25f},
                                                  {at.x + size * 0.5f, at.y + size * 0.75f}, color, 2.0f);
    }
    ImGui::SetCursorPosX(ImGui::GetCursorPosX() + ImGui::GetFontSize() * 0.8f);
    ImGui::TextUnformatted(name);
    const std::string text = fmt::format("{:.2f} ms", ms);
    ImGui::SameLine(ImGui::GetContentRegionMax().x - ImGui::CalcTextSize(text.c_str()).x);
    ImGui::TextUnformatted(text.c_str());
}

// Of the pictures of the graph.
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

// The container that a message names in quotes, and the first word that is one of its parameters.
std::optional<ShowParameter> target_of(const Studio& studio, const std::string& message) {
    if (!studio.report.facts) return {};
    for (const ContainerFacts& container : studio.report.facts->containers) {
        if (!container.noted || message.find("'" + container.name + "'") == std::string::npos) continue;
        std::istringstream words(message);
        for (std::string word; words >> word;) {
            std::erase_if(word, [](char c) { return c != '_' && std::isalnum(static_cast<unsigned char>(c)) == 0; });
            if (stage::find_parameter(container.noted->plugin, word) != nullptr)
                return ShowParameter{container.name, word};
        }
        return ShowParameter{container.name, ""};
    }
    return {};
}

}  // namespace

void numbers_panel(PanelFrame& frame, const Area& area, const std::string& renderer) {
    begin_panel("Numbers", area);
    const Studio& studio = frame.studio;
    if (!studio.scene || studio.numbers.empty()) {
        ImGui::End();
        return;
    }
    if (studio.report.drawn)
        for (const ParticleCounts& counts : studio.report.drawn->particles) show_particles(counts);
    ImGui::Separator();
    const double budget_ms = 1000.0 / studio.scene->frame_rate;
    draw_graph(studio, budget_ms);
    mark(frame.targets, "numbers");
    const FrameNumbers mean = mean_numbers(studio.numbers);
    number("step", mean.step_ms, kStepColor);
    number("plug-ins draw", mean.plugin_draw_ms, kDrawColor);
    for (const SectionTime& section : mean.sections) number(("   " + section.name).c_str(), section.ms);
    number("renderer", mean.picture_ms, kPictureColor);
    number("studio", studio.studio_ms + mean.other_ms);
    number("window", studio.window_ms);
    const double smoke_ms = mean.step_ms + mean.plugin_draw_ms;
    ImGui::PushTextWrapPos();
    if (smoke_ms > budget_ms) ImGui::TextColored(ImColor(kWarning), "over budget by %.1f ms", smoke_ms - budget_ms);
    ImGui::TextDisabled("%s", renderer.c_str());
    ImGui::PopTextWrapPos();
    ImGui::End();
}

void surprises_panel(PanelFrame& frame, const Area& area) {
    begin_panel("Surprises", area);
    ImGui::TextDisabled("Surprises");
    mark(frame.targets, "surprises");
    const auto& facts = frame.studio.report.facts;
    if (!facts || facts->surprises.empty()) ImGui::TextWrapped("None: nothing here does less than it seems.");
    int index = 0;
    for (const std::string& line : facts ? facts->surprises : std::vector<std::string>()) {
        ImGui::PushID(index);
        const std::string text = without_place(line);
        const float width = ImGui::GetContentRegionAvail().x;
        const ImVec2 size = ImGui::CalcTextSize(text.c_str(), nullptr, false, width);
        const ImVec2 start = ImGui::GetCursorScreenPos();
        if (ImGui::Selectable("##line", false, 0, {width, size.y}))
            if (const auto target = target_of(frame.studio, text)) frame.commands.push_back(*target);
        mark(frame.targets, fmt::format("surprise.{}", index++));
        ImGui::GetWindowDrawList()->AddText(ImGui::GetFont(), ImGui::GetFontSize(), start, kWarning, text.c_str(),
                                            nullptr, width);
        ImGui::Spacing();
        ImGui::PopID();
    }
    ImGui::End();
}

}  // namespace tovu
