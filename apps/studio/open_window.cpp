// The window that opens a scene or a look: the name is typed or chosen in the list of a folder.
#include <algorithm>

#include "panels.h"
#include "stage/file_ending.h"
#include "theme.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;

constexpr const char* kTitle = "Open##window";

// The names in a folder: folders first, then scenes and looks. Leaves out hidden names and other files.
std::vector<std::string> names_in(const fs::path& folder, std::error_code& code) {
    std::vector<std::string> folders, files;
    for (fs::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code)) {
        const std::string name = entry->path().filename().string();
        std::error_code ignored;
        if (name.starts_with('.')) continue;
        if (entry->is_directory(ignored))
            folders.push_back(name + "/");
        else if (stage::file_ending(name) == ".toml")
            files.push_back(name);
    }
    std::sort(folders.begin(), folders.end());
    std::sort(files.begin(), files.end());
    folders.insert(folders.begin(), "../");
    folders.insert(folders.end(), files.begin(), files.end());
    return folders;
}

void enter_folder(OpenChoice& choice, const fs::path& folder) {
    std::error_code code;
    std::vector<std::string> names = names_in(folder, code);
    if (code) {
        choice.mistake = folder.string() + ": cannot be read: " + code.message();
        return;
    }
    choice = {folder, std::move(names), "", "", "", true};
}

// Enters the typed folder or opens the typed file. If the file cannot be opened, keeps the text and shows the mistake.
void take_typed(PanelFrame& frame) {
    OpenChoice& choice = frame.memory.open;
    choice.wants_focus = true;
    const fs::path path = typed_path(choice.typed, choice.folder).lexically_normal();
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) return enter_folder(choice, path);
    if (const auto opened = open_document(path); !opened) {
        choice.mistake = opened.error().message;
        return;
    }
    frame.commands.push_back(OpenScene{path});
    frame.memory.shows_open = false;
}

// Up and Down put the previous or next name of the list into the field.
int step_through_names(ImGuiInputTextCallbackData* data) {
    const auto& names = *static_cast<const std::vector<std::string>*>(data->UserData);
    const auto at =
        std::find(names.begin(), names.end(), std::string(data->Buf, static_cast<size_t>(data->BufTextLen)));
    const bool is_down = data->EventKey == ImGuiKey_DownArrow;
    const bool is_listed = at != names.end();
    if (is_listed && (is_down ? at + 1 == names.end() : at == names.begin())) return 0;
    const std::string& name = !is_listed ? (is_down ? names.front() : names.back()) : is_down ? *(at + 1) : *(at - 1);
    data->DeleteChars(0, data->BufTextLen);
    data->InsertChars(0, name.c_str());
    return 0;
}

// The field of the name. True when Enter was pressed.
bool show_field(PanelFrame& frame) {
    OpenChoice& choice = frame.memory.open;
    ImGui::TextDisabled("%s", choice.folder.c_str());
    ImGui::SetNextItemWidth(-1);
    if (ImGui::IsWindowAppearing() || std::exchange(choice.wants_focus, false)) ImGui::SetKeyboardFocusHere();
    const bool entered = ImGui::InputTextWithHint(
        "##file", "a name or a path; Up and Down choose one", &choice.typed,
        ImGuiInputTextFlags_EnterReturnsTrue | ImGuiInputTextFlags_CallbackHistory, step_through_names, &choice.names);
    mark(frame.targets, "open.file");
    // A click in the list does not move the focus back to the field, which would swallow the second click of a double
    // click. Enter is therefore read without the field too.
    return entered || (!ImGui::IsItemActive() && ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Enter)));
}

// The list of names. True when a name was double-clicked.
bool show_names(PanelFrame& frame) {
    OpenChoice& choice = frame.memory.open;
    const std::string scrolled = std::exchange(choice.shown, choice.typed);
    bool taken = false;
    ImGui::BeginChild("names", {0, ImGui::GetFontSize() * 18.0f}, true);
    for (const std::string& name : choice.names) {
        const bool is_typed = name == choice.typed;
        if (ImGui::Selectable(name.c_str(), is_typed, ImGuiSelectableFlags_AllowDoubleClick)) {
            choice.typed = choice.shown = name;
            taken = taken || ImGui::IsMouseDoubleClicked(ImGuiMouseButton_Left);
        }
        mark(frame.targets, "open.name." + name);
        if (is_typed && scrolled != name) ImGui::SetScrollHereY();
    }
    ImGui::EndChild();
    return taken;
}

}  // namespace

void open_window(PanelFrame& frame) {
    PanelMemory& memory = frame.memory;
    if (memory.shows_open && !ImGui::IsPopupOpen(kTitle)) {
        std::error_code ignored;
        const auto& document = frame.studio.document;
        const bool has_file = document && !document->file.empty();
        enter_folder(memory.open, has_file ? document->folder : fs::current_path(ignored));
        ImGui::OpenPopup(kTitle);
    }
    ImGui::SetNextWindowSize({ImGui::GetFontSize() * 36.0f, 0});
    if (!ImGui::BeginPopupModal(kTitle, nullptr, ImGuiWindowFlags_AlwaysAutoResize)) return;
    const bool entered = show_field(frame);
    const bool taken = show_names(frame);
    if (!memory.open.mistake.empty()) {
        ImGui::PushStyleColor(ImGuiCol_Text, kMistake);
        ImGui::TextWrapped("%s", memory.open.mistake.c_str());
        ImGui::PopStyleColor();
        mark(frame.targets, "open.mistake");
    }
    const bool pressed = main_button("Open");
    mark(frame.targets, "open.open");
    ImGui::SameLine();
    if (ImGui::Button("Cancel") || ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Escape))) memory.shows_open = false;
    if (entered || taken || pressed) take_typed(frame);
    if (!memory.shows_open) ImGui::CloseCurrentPopup();
    ImGui::EndPopup();
}

}  // namespace tovu
