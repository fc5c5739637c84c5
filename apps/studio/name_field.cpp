#include "name_field.h"

#include <algorithm>

#include "stage/scenefile/built_in_images.h"

namespace tovu {

std::vector<NameChoice> images_to_choose(const stage::SceneDescription& scene) {
    std::vector<NameChoice> built_in;
    if (const auto& images = stage::built_in_images(); images)
        for (const auto& [name, image] : *images)
            built_in.push_back({image.files.front().parent_path().filename().string(), name});
    std::sort(built_in.begin(), built_in.end());
    const auto is_built_in = [&](const std::string& name) {
        return std::any_of(built_in.begin(), built_in.end(),
                           [&](const NameChoice& choice) { return choice.name == name; });
    };
    std::vector<NameChoice> choices;
    for (const auto& [name, image] : scene.images)
        if (!is_built_in(name)) choices.push_back({"scene", name});
    choices.insert(choices.end(), built_in.begin(), built_in.end());
    return choices;
}

std::optional<std::string> name_field(Targets& targets, const std::string& target, const std::string& text, float width,
                                      const std::function<std::vector<NameChoice>()>& choices) {
    std::optional<std::string> chosen;
    std::string typed = text;
    const float gap = ImGui::GetStyle().ItemInnerSpacing.x;
    ImGui::SetNextItemWidth(width - ImGui::GetFrameHeight() - gap);
    if (ImGui::InputTextWithHint("##value", "none", &typed, ImGuiInputTextFlags_EnterReturnsTrue) ||
        ImGui::IsItemDeactivatedAfterEdit())
        chosen = typed;
    ImGui::SameLine(0, gap);
    ImGui::PushStyleVar(ImGuiStyleVar_Alpha, 1.0f);  // keeps the list readable if the line is dimmed
    const bool is_open = ImGui::BeginCombo("##names", "", ImGuiComboFlags_NoPreview | ImGuiComboFlags_PopupAlignLeft);
    ImGui::PopStyleVar();
    mark(targets, target + ".list");
    if (!is_open) return chosen;
    for (const NameChoice& choice : choices()) {
        if (ImGui::Selectable(choice.name.c_str(), choice.name == text)) chosen = choice.name;
        mark(targets, target + "." + choice.name);
        ImGui::SameLine(ImGui::GetFontSize() * 10.0f);
        ImGui::TextDisabled("%s", choice.from.c_str());
    }
    ImGui::EndCombo();
    return chosen;
}

}  // namespace tovu
