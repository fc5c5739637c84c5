// The window that exports a still or a video in the background.
#include <fmt/format.h>

#include "panels.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

// The proposed file: the scene's name with the ending of a still or a video.
std::string proposed_file(const PanelFrame& frame) {
    const Document& document = *frame.studio.document;
    std::filesystem::path file = folder_for_files(document) / scene_file(document).filename();
    return file.replace_extension(frame.memory.exports_still ? ".png" : ".mp4").string();
}

std::string video_label(const Studio& studio) {
    if (plays_whole_scene(studio)) return "Video of the whole scene###video";
    return fmt::format("Video of frames {} to {}###video", studio.orders.range.first, studio.orders.range.last);
}

void choose_kind(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    for (const bool is_still : {false, true}) {
        const std::string label = is_still ? "Still of the picture on screen" : video_label(frame.studio);
        if (ImGui::RadioButton(label.c_str(), memory.exports_still == is_still)) {
            memory.exports_still = is_still;
            memory.export_file = proposed_file(frame);
        }
        if (!is_still) widgets::tip("In and Out beside the timeline choose the frames");
        mark(frame.targets, is_still ? "export.still" : "export.video");
        ImGui::SameLine(0, ImGui::GetFontSize());
    }
    ImGui::NewLine();
}

void start(PanelFrame& frame) {
    const Studio& studio = frame.studio;
    std::string frames;
    if (frame.memory.exports_still)
        frames = std::to_string(std::max<int64_t>(studio.report.frame, 0));
    else if (!plays_whole_scene(studio))
        frames = fmt::format("{}-{}", studio.orders.range.first, studio.orders.range.last);
    frame.commands.push_back(StartExport{frame.memory.export_file, frames});
}

void show_order(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    choose_kind(frame);
    ImGui::TextUnformatted("File");
    ImGui::SetNextItemWidth(-1);
    if (ImGui::IsWindowAppearing()) ImGui::SetKeyboardFocusHere();
    const bool entered = ImGui::InputText("##file", &memory.export_file, ImGuiInputTextFlags_EnterReturnsTrue);
    mark(frame.targets, "export.file");
    ImGui::TextDisabled("%s", memory.exports_still ? ".png and .exr keep the alpha"
                                                   : ".mov, .webm, .webp and .gif keep the alpha, .mp4 does not");
    std::error_code ignored;
    const bool exists = std::filesystem::exists(memory.export_file, ignored);
    const bool is_just_made = frame.studio.export_state && frame.studio.export_state->ended &&
                              frame.studio.export_state->error.empty() &&
                              frame.studio.export_file == memory.export_file;
    if (exists && !is_just_made) ImGui::TextColored(ImColor(kWarning), "This file exists and will be replaced.");
    const bool pressed = main_button(exists ? "Replace" : "Export");
    mark(frame.targets, "export.start");
    if (pressed || entered) start(frame);
}

void show_progress(PanelFrame& frame, const ExportState& state) {
    ImGui::TextWrapped("%s", frame.studio.export_file.string().c_str());
    const int total = std::max(state.frames_total, 1);
    const std::string text = state.frames_total == 0
                                 ? "Preparing"
                                 : fmt::format("{} of {} pictures, {:.0f} s left", state.frames_done,
                                               state.frames_total, state.seconds_left);
    ImGui::ProgressBar(static_cast<float>(state.frames_done) / static_cast<float>(total), {-1, 0}, text.c_str());
    if (ImGui::Button("Cancel")) frame.commands.push_back(CancelExport{});
    mark(frame.targets, "export.cancel");
}

// Shows the outcome of the last export.
void show_outcome(const ExportState& state) {
    if (state.error.empty())
        ImGui::TextColored(ImColor(kAccent), "Exported");
    else if (state.error == "cancelled")
        ImGui::TextDisabled("Cancelled");
    else
        ImGui::TextColored(ImColor(kMistake), "%s", state.error.c_str());
}

}  // namespace

void export_window(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    if (!memory.shows_export) return;
    const ImVec2 middle(ImGui::GetIO().DisplaySize.x / 2, ImGui::GetIO().DisplaySize.y / 3);
    ImGui::SetNextWindowPos(middle, ImGuiCond_Appearing, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({ImGui::GetFontSize() * 32.0f, 0});
    const ImGuiWindowFlags flags = ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse;
    if (ImGui::Begin("Export", &memory.shows_export, flags)) {
        if (ImGui::IsWindowAppearing()) memory.export_file = proposed_file(frame);
        const std::optional<ExportState>& state = frame.studio.export_state;
        if (state && !state->ended)
            show_progress(frame, *state);
        else
            show_order(frame);
        if (state && state->ended && frame.studio.export_file == memory.export_file) show_outcome(*state);
        if (ImGui::IsWindowFocused() && ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape)))
            memory.shows_export = false;
    }
    ImGui::End();
}

}  // namespace tovu
