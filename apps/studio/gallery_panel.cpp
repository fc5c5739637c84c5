// The page of the gallery: cards with pictures, grouped in parts.
#include <imgui_internal.h>

#include <algorithm>
#include <cctype>

#include "gallery.h"
#include "theme.h"
#include "widgets/tip.h"

namespace tovu {

namespace {

constexpr float kRounding = 6;

// The text on at most `lines` lines. "…" replaces the part that does not fit. size: font size, width: of a line, both
// in pixels.
std::string fitted(const std::string& text, float size, float width, int lines) {
    const ImFont* font = ImGui::GetFont();
    const float scale = size / font->FontSize;
    const auto width_of = [&](const std::string& line) {
        return font->CalcTextSizeA(size, FLT_MAX, 0, line.c_str()).x;
    };
    const char* const end = text.c_str() + text.size();
    std::string result;
    for (const char* at = text.c_str(); at < end; --lines) {
        const char* line_end = font->CalcWordWrapPositionA(scale, at, end, width);
        std::string line(at, std::max(line_end, at + 1));
        if (lines == 1 && line_end < end) {
            while (!line.empty() && width_of(line + "…") > width) {
                while (line.size() > 1 && (static_cast<unsigned char>(line.back()) & 0xc0) == 0x80) line.pop_back();
                line.pop_back();
            }
            return result + line + "…";
        }
        result += line + "\n";
        at += line.size();
        while (at < end && *at == ' ') ++at;
    }
    return result;
}

// A file's name as a title: "cup_steam" becomes "Cup steam".
std::string title_of(const GalleryEntry& entry) {
    std::string title = entry.name;
    std::replace(title.begin(), title.end(), '_', ' ');
    if (!title.empty()) title[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(title[0])));
    return title;
}

std::string first_sentence(const std::string& text) {
    return text.substr(0, text.find(". "));
}

// Draws the picture, cropped to the card's aspect ratio.
void draw_picture(const GalleryEntry& entry, ImVec2 low, ImVec2 high) {
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(low, high, kWell, kRounding);
    if (entry.texture.number() != 0) {
        list->AddImageRounded(reinterpret_cast<ImTextureID>(static_cast<uintptr_t>(entry.texture.number())), low, high,
                              {0, 1}, {1, 0}, IM_COL32_WHITE, kRounding);
        return;
    }
    const char* text = entry.mistake.empty() ? "…" : "Cannot be shown";
    const ImVec2 size = ImGui::CalcTextSize(text);
    list->AddText({(low.x + high.x - size.x) / 2, (low.y + high.y - size.y) / 2}, kDim, text);
}

void draw_card(const GalleryEntry& entry, ImVec2 low, ImVec2 high, float picture_height) {
    const float font = ImGui::GetFontSize(), pad = font * 0.5f, small = font * 0.85f;
    const float text_width = high.x - low.x - 2 * pad, text_top = low.y + picture_height;
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(
        low, high, ImGui::GetColorU32(ImGui::IsItemHovered() ? ImGuiCol_HeaderHovered : ImGuiCol_Header), kRounding);
    draw_picture(entry, low, {high.x, text_top});
    list->AddText({low.x + pad, text_top + pad * 0.6f}, ImGui::GetColorU32(ImGuiCol_Text),
                  fitted(title_of(entry), font, text_width, 1).c_str());
    list->AddText(ImGui::GetFont(), small, {low.x + pad, text_top + font * 1.45f}, kDim,
                  fitted(first_sentence(entry.purpose), small, text_width, 2).c_str());
    if (ImGui::IsItemFocused() && !GImGui->NavDisableHighlight)
        list->AddRect(low, high, ImGui::GetColorU32(ImGuiCol_NavHighlight), kRounding, 0, font * 0.15f);
}

void show_card(PanelFrame& frame, const GalleryEntry& entry, float width) {
    const float picture_height = width * 9.0f / 16.0f, height = picture_height + ImGui::GetFontSize() * 3.7f;
    ImGui::PushID(entry.file.c_str());
    ImGui::PushID(static_cast<int>(entry.part));
    const ImVec2 low = ImGui::GetCursorScreenPos();
    const bool chosen = ImGui::InvisibleButton("card", {width, height});
    constexpr const char* kMarks[] = {"recent.", "look.", "scene."};
    mark(frame.targets, kMarks[static_cast<size_t>(entry.part)] + entry.name);
    draw_card(entry, low, {low.x + width, low.y + height}, picture_height);
    widgets::tip((entry.mistake.empty() ? entry.purpose : entry.mistake) + "\n" + entry.file.string());
    if (chosen && entry.part == GalleryPart::kLooks) frame.commands.push_back(NewFromLook{entry.name});
    if (chosen && entry.part != GalleryPart::kLooks) frame.commands.push_back(OpenScene{entry.file});
    ImGui::PopID();
    ImGui::PopID();
}

// The title of a part and a hint, on one baseline.
void show_heading(const char* title, const char* hint) {
    const float rise = heading_font()->Ascent - ImGui::GetFont()->Ascent;
    ImGui::PushFont(heading_font());
    ImGui::TextUnformatted(title);
    ImGui::PopFont();
    ImGui::SameLine(0, ImGui::GetFontSize() * 0.75f);
    ImGui::SetCursorPosY(ImGui::GetCursorPosY() + rise);
    ImGui::TextDisabled("%s", hint);
}

void show_cards(PanelFrame& frame, const Gallery& gallery, GalleryPart part, const char* title, const char* hint) {
    const auto is_here = [part](const GalleryEntry& entry) { return entry.part == part; };
    if (std::none_of(gallery.entries.begin(), gallery.entries.end(), is_here)) return;
    show_heading(title, hint);
    const float available = ImGui::GetContentRegionAvail().x, gap = ImGui::GetStyle().ItemSpacing.x * 1.5f;
    const int columns = std::max(1, static_cast<int>((available + gap) / (ImGui::GetFontSize() * 15.0f + gap)));
    const float width = (available - gap * static_cast<float>(columns - 1)) / static_cast<float>(columns);
    ImGui::PushStyleVar(ImGuiStyleVar_ItemSpacing, {gap, gap});
    int column = 0;
    for (const GalleryEntry& entry : gallery.entries) {
        if (!is_here(entry)) continue;
        if (column != 0) ImGui::SameLine();
        show_card(frame, entry, width);
        column = (column + 1) % columns;
    }
    ImGui::PopStyleVar();
    ImGui::Dummy({0, ImGui::GetFontSize() * 0.5f});
}

void show_recoveries(PanelFrame& frame, const Gallery& gallery) {
    for (const Recovery& recovery : gallery.recoveries) {
        ImGui::PushID(recovery.copy.c_str());
        const float buttons = button_width("Open it") + button_width("Discard") + 3 * ImGui::GetStyle().ItemSpacing.x;
        fitted_text("Unsaved work of " + recovery.name, ImGui::GetContentRegionAvail().x - buttons, kWarning);
        ImGui::SameLine();
        if (ImGui::Button("Open it")) frame.commands.push_back(TakeRecovery{recovery});
        mark(frame.targets, "recovery.take");
        ImGui::SameLine();
        if (ImGui::Button("Discard")) frame.commands.push_back(DiscardRecovery{recovery});
        mark(frame.targets, "recovery.discard");
        ImGui::PopID();
    }
    if (!gallery.recoveries.empty()) ImGui::Dummy({0, ImGui::GetFontSize() * 0.5f});
}

}  // namespace

void gallery_panel(PanelFrame& frame, const Gallery& gallery, const Area& area) {
    begin_panel("Gallery", area);
    show_recoveries(frame, gallery);
    show_cards(frame, gallery, GalleryPart::kRecent, "Recent files", "Click one to go on with it");
    show_cards(frame, gallery, GalleryPart::kLooks, "Looks", "Click one to begin a new scene with it");
    show_cards(frame, gallery, GalleryPart::kScenes, "Scenes", "Click one to open it");
    const bool is_drawn = std::all_of(gallery.entries.begin(), gallery.entries.end(), [](const GalleryEntry& entry) {
        return entry.texture.number() != 0 || !entry.mistake.empty();
    });
    if (is_drawn) mark(frame.targets, "drawn");
    ImGui::End();
}

}  // namespace tovu
