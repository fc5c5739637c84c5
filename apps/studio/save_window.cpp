// Saving under another name, as the document or as a look of one container.
#include "panels.h"
#include "theme.h"

namespace tovu {

namespace {

constexpr const char* kTitle = "Save as##window";

// The container whose look would be saved: of a layer, the one with its look.
std::string container_with_look(const Studio& studio) {
    const ContainerFacts* selected = selected_container(studio);
    if (selected == nullptr || !studio.scene) return "";
    for (const stage::ContainerDescription& one : studio.scene->containers) {
        if (one.name == selected->name && one.look_container >= 0)
            return studio.scene->containers[static_cast<size_t>(one.look_container)].name;
    }
    return selected->name;
}

std::string proposed_file(const PanelFrame& frame) {
    const Document& document = *frame.studio.document;
    const std::filesystem::path folder = folder_for_files(document);
    if (frame.memory.saves_look) return (folder / "looks" / (container_with_look(frame.studio) + ".toml")).string();
    return (folder / scene_file(document).filename()).string();
}

// Scene, or look of the selected container. A look file is saved as what it is.
void choose_kind(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    const std::string container = container_with_look(frame.studio);
    if (frame.studio.document->kind == DocumentKind::kLook || container.empty()) {
        memory.saves_look = false;
        return;
    }
    for (const bool is_look : {false, true}) {
        const std::string label = is_look ? "Look of " + container : "Scene";
        if (ImGui::RadioButton(label.c_str(), memory.saves_look == is_look)) {
            memory.saves_look = is_look;
            memory.save_as = proposed_file(frame);
        }
        mark(frame.targets, is_look ? "save as.look" : "save as.scene");
        ImGui::SameLine();
    }
    ImGui::NewLine();
}

// A name without ending is a TOML file's; one without folder goes where the proposed file is.
std::string chosen_file(const PanelFrame& frame) {
    std::filesystem::path file = frame.memory.save_as;
    if (!file.has_filename()) return file.string();
    if (!file.has_extension()) file += ".toml";
    return (std::filesystem::path(proposed_file(frame)).parent_path() / file).string();
}

void give_command(PanelFrame& frame, const std::string& file, bool overwrite) {
    const PanelMemory& memory = frame.memory;
    if (memory.saves_look)
        frame.commands.push_back(SaveLook{
            {container_with_look(frame.studio), memory.purpose, file, overwrite ? Overwrite::kYes : Overwrite::kNo}});
    else
        frame.commands.push_back(SaveAs{file, overwrite});
}

}  // namespace

void save_as_window(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    if (memory.shows_save_as && !ImGui::IsPopupOpen(kTitle)) {
        memory.saves_look = false;
        memory.save_as = proposed_file(frame);
        ImGui::OpenPopup(kTitle);
    }
    ImGui::SetNextWindowSize({ImGui::GetFontSize() * 32.0f, 0});
    if (!ImGui::BeginPopupModal(kTitle, nullptr, ImGuiWindowFlags_AlwaysAutoResize)) return;
    choose_kind(frame);
    ImGui::TextUnformatted("File");
    ImGui::SetNextItemWidth(-1);
    if (ImGui::IsWindowAppearing()) ImGui::SetKeyboardFocusHere();
    const bool entered = ImGui::InputText("##file", &memory.save_as, ImGuiInputTextFlags_EnterReturnsTrue);
    mark(frame.targets, "save as.file");
    if (memory.saves_look) {
        ImGui::TextUnformatted("What it is for");
        ImGui::SetNextItemWidth(-1);
        ImGui::InputTextWithHint("##purpose", "one line, such as: Steam over a cup", &memory.purpose);
        mark(frame.targets, "save as.purpose");
    }
    std::error_code ignored;
    const std::string file = chosen_file(frame);
    const bool exists = std::filesystem::exists(file, ignored);
    if (exists) ImGui::TextColored(ImColor(kWarning), "This file exists and will be replaced.");
    const bool save = ImGui::Button(exists ? "Replace" : "Save") || entered;
    mark(frame.targets, "save as.save");
    ImGui::SameLine();
    const bool cancel = ImGui::Button("Cancel") || ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape));
    if (save) give_command(frame, file, exists);
    if (save || cancel) {
        memory.shows_save_as = false;
        ImGui::CloseCurrentPopup();
    }
    ImGui::EndPopup();
}

}  // namespace tovu
