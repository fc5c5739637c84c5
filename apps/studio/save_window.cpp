// The window "Save as": saves the document under another name, or a container as a look.
#include <utility>

#include "panels.h"
#include "stage/file_ending.h"
#include "theme.h"

namespace tovu {

namespace {

constexpr const char* kTitle = "Save as##window";

// The container to save as a look. For a layer, the container that uses its look. Empty for a container without smoke.
std::string container_with_look(const Studio& studio) {
    const ContainerFacts* selected = selected_container(studio);
    if (selected == nullptr || !studio.scene) return "";
    for (const stage::ContainerDescription& one : studio.scene->containers) {
        if (one.name != selected->name) continue;
        if (one.look_container >= 0) return studio.scene->containers[static_cast<size_t>(one.look_container)].name;
        if (!one.has_plugin && one.look.empty()) return "";
    }
    return selected->name;
}

std::string proposed_file(const PanelFrame& frame) {
    const Document& document = *frame.studio.document;
    const std::filesystem::path folder = folder_for_files(document);
    if (frame.memory.saves_look) return (folder / "looks" / (container_with_look(frame.studio) + ".toml")).string();
    return (folder / scene_file(document).filename()).string();
}

// The choice between saving the scene and saving a look. A look file has no choice.
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
        ImGui::SameLine(0, ImGui::GetFontSize());
    }
    ImGui::NewLine();
}

// The typed file with the ending .toml. A name without a folder gets the proposed folder.
std::filesystem::path chosen_file(const PanelFrame& frame) {
    std::filesystem::path file =
        typed_path(frame.memory.save_as, std::filesystem::path(proposed_file(frame)).parent_path());
    if (file.has_filename() && stage::file_ending(file) != ".toml") file += ".toml";
    return file;
}

// The reason why the file cannot be saved; empty if it can.
std::string mistake_in(const std::filesystem::path& file, bool makes_folder) {
    std::error_code ignored;
    if (!file.has_filename() || std::filesystem::is_directory(file, ignored))
        return file.string() + " is a folder: add a name";
    if (!makes_folder && !std::filesystem::is_directory(file.parent_path(), ignored))
        return "There is no folder " + file.parent_path().string();
    return "";
}

void give_command(PanelFrame& frame, const std::filesystem::path& file, bool overwrite) {
    const PanelMemory& memory = frame.memory;
    if (memory.saves_look)
        frame.commands.push_back(SaveLook{
            {container_with_look(frame.studio), memory.purpose, file, overwrite ? Overwrite::kYes : Overwrite::kNo}});
    else
        frame.commands.push_back(SaveAs{file, overwrite});
}

// The fields of the window. True when Enter was pressed in the file's name.
bool show_fields(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    choose_kind(frame);
    ImGui::TextUnformatted("File");
    ImGui::SetNextItemWidth(-1);
    if (ImGui::IsWindowAppearing() || std::exchange(memory.wants_save_name, false)) ImGui::SetKeyboardFocusHere();
    const bool entered = ImGui::InputText("##file", &memory.save_as, ImGuiInputTextFlags_EnterReturnsTrue);
    mark(frame.targets, "save as.file");
    if (!memory.saves_look) return entered;
    ImGui::TextUnformatted("What it is for");
    ImGui::SetNextItemWidth(-1);
    ImGui::InputTextWithHint("##purpose", "one line, such as: Steam over a cup", &memory.purpose);
    mark(frame.targets, "save as.purpose");
    return entered;
}

void show_line(const std::string& text, ImU32 color) {
    ImGui::PushStyleColor(ImGuiCol_Text, color);
    ImGui::TextWrapped("%s", text.c_str());
    ImGui::PopStyleColor();
}

// Saves when the button or Enter is pressed. Enter is needed twice if the file exists. Returns whether the command to
// save was given.
bool save_to(PanelFrame& frame, const std::filesystem::path& file, bool entered) {
    std::error_code ignored;
    const bool exists = std::filesystem::exists(file, ignored);
    const bool was_asked = exists && frame.memory.asked_to_replace == file;
    if (was_asked)
        show_line("This file exists: Enter replaces it.", kWarning);
    else if (exists)
        show_line("This file exists and will be replaced.", kWarning);
    else if (file != frame.memory.save_as)
        show_line(file.string(), kDim);
    const bool pressed = main_button(exists ? "Replace" : "Save");
    mark(frame.targets, "save as.save");
    if (entered) frame.memory.asked_to_replace = file;
    if (!pressed && !(entered && (was_asked || !exists))) return false;
    give_command(frame, file, exists);
    return true;
}

}  // namespace

void save_as_window(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    if (frame.studio.failed_saves != std::exchange(memory.shown_failed_saves, frame.studio.failed_saves)) {
        memory.save_mistake = frame.studio.notice.text;
        memory.shows_save_as = true;
    }
    if (memory.shows_save_as && !ImGui::IsPopupOpen(kTitle)) {
        memory.saves_look = false;
        memory.save_as = proposed_file(frame);
        memory.asked_to_replace.clear();
        ImGui::OpenPopup(kTitle);
    }
    ImGui::SetNextWindowSize({ImGui::GetFontSize() * 32.0f, 0});
    if (!ImGui::BeginPopupModal(kTitle, nullptr, ImGuiWindowFlags_AlwaysAutoResize)) return;
    if (!memory.save_mistake.empty()) show_line(memory.save_mistake, kMistake);
    const bool entered = show_fields(frame);
    memory.wants_save_name = entered;
    const std::filesystem::path file = chosen_file(frame);
    const std::string mistake = mistake_in(file, memory.saves_look);
    bool saved = false;
    if (mistake.empty()) {
        saved = save_to(frame, file, entered);
        ImGui::SameLine();
    } else {
        show_line(mistake, kMistake);
    }
    const bool cancel = ImGui::Button("Cancel") || ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape));
    if (saved || cancel) {
        memory.shows_save_as = false;
        memory.save_mistake.clear();
        ImGui::CloseCurrentPopup();
    }
    ImGui::EndPopup();
}

}  // namespace tovu
