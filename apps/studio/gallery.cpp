#include "gallery.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "stage/assets/picture_file.h"
#include "stage/output/png_file.h"
#include "stage/output/whole_file.h"
#include "stage/replay/fnv1a.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"
#include "theme.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;
using stage::Result;

constexpr int32_t kThumbnailHeight = 216;
constexpr double kShownShare = 0.6;  // of a scene's length: where its picture is taken

fs::path cache_folder() {
    if (const char* folder = std::getenv("XDG_CACHE_HOME"); folder != nullptr && *folder != '\0')
        return fs::path(folder) / "tovu";
    const char* home = std::getenv("HOME");
    return (home != nullptr ? fs::path(home) / ".cache" : fs::temp_directory_path()) / "tovu";
}

// The first line of comments at the top of a scene.
std::string first_comment(const std::string& text) {
    if (!text.starts_with("#")) return "";
    std::string line = text.substr(1, text.find('\n') - 1);
    line.erase(0, line.find_first_not_of(' '));
    return line;
}

std::string purpose_of(const GalleryEntry& entry, const std::string& text) {
    if (!entry.is_look) return first_comment(text);
    const Result<stage::LookDescription> look = stage::load_look_file(entry.file);
    return look ? look->purpose : "";
}

GalleryEntry entry_of(const fs::path& file, bool is_look, const fs::path& cache) {
    GalleryEntry entry{file.stem().string(), "", file, is_look, {}, {}, {}};
    const std::string text = stage::read_whole_file(file);
    entry.purpose = purpose_of(entry, text);
    stage::Fnv1a digest;
    digest.add(std::string_view(text));
    entry.cached = cache / fmt::format("{}_{:016x}.png", entry.name, digest.value);
    if (std::error_code ignored; !fs::exists(entry.cached, ignored)) return entry;
    if (const Result<stage::Picture> picture = stage::read_picture(entry.cached))
        if (const auto shown = stage::replace_texture(entry.texture, *picture); !shown)
            entry.mistake = shown.error().message;
    return entry;
}

std::vector<fs::path> scene_files(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code ignored;
    for (const auto& found : fs::directory_iterator(folder, ignored))
        if (found.path().extension() == ".toml") files.push_back(found.path());
    std::sort(files.begin(), files.end());
    return files;
}

// Those of the current folder, where the studio proposes to save.
std::vector<fs::path> own_scene_files(const fs::path& scenes_folder) {
    std::error_code ignored;
    const fs::path folder = fs::current_path(ignored);
    if (fs::equivalent(folder, scenes_folder, ignored)) return {};
    std::vector<fs::path> files = scene_files(folder);
    std::erase_if(files, [](const fs::path& file) { return !stage::load_scene_file(file); });
    return files;
}

Result<stage::SceneDescription> scene_of(const GalleryEntry& entry) {
    if (!entry.is_look) return stage::load_scene_file(entry.file);
    const Result<Document> document = new_scene_of_look(entry.name, fs::current_path());
    if (!document) return document.error();
    return stage::read_scene(scene_text(*document), scene_file(*document));
}

void order_thumbnail(GalleryEntry& entry, int64_t number, std::vector<ThumbnailOrder>& orders) {
    Result<stage::SceneDescription> scene = scene_of(entry);
    if (!scene) {
        entry.mistake = scene.error().message;
        return;
    }
    scene->size = {scene->size[0] * kThumbnailHeight / scene->size[1], kThumbnailHeight};
    if (!scene->background) scene->background = stage::Triple{0.05f, 0.06f, 0.08f};
    const auto frame = static_cast<int64_t>(kShownShare * static_cast<double>(stage::frame_count(*scene)));
    orders.push_back({number, std::make_shared<const stage::SceneDescription>(std::move(*scene)), frame});
}

// The picture in the card, cut to the card's shape.
void draw_picture(const GalleryEntry& entry, ImVec2 low, ImVec2 high) {
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddRectFilled(low, high, kWell, 6.0f);
    if (entry.texture.number() != 0) {
        list->AddImageRounded(reinterpret_cast<ImTextureID>(static_cast<uintptr_t>(entry.texture.number())), low, high,
                              {0, 1}, {1, 0}, IM_COL32_WHITE, 6.0f);
        return;
    }
    const char* text = entry.mistake.empty() ? "…" : "cannot be shown";
    const ImVec2 size = ImGui::CalcTextSize(text);
    list->AddText({(low.x + high.x - size.x) / 2, (low.y + high.y - size.y) / 2}, kDim, text);
}

void show_card(PanelFrame& frame, const GalleryEntry& entry, float width) {
    const float font = ImGui::GetFontSize();
    const float picture_height = width * 9.0f / 16.0f;
    const float height = picture_height + font * 3.7f;
    ImGui::PushID(entry.file.c_str());
    const ImVec2 low = ImGui::GetCursorScreenPos();
    const bool pressed = ImGui::InvisibleButton("card", {width, height});
    mark(frame.targets, (entry.is_look ? "look." : "scene.") + entry.name);
    const bool hovered = ImGui::IsItemHovered() || ImGui::IsItemFocused();
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImU32 back = hovered ? IM_COL32(50, 58, 70, 255) : IM_COL32(37, 42, 50, 255);
    list->AddRectFilled(low, {low.x + width, low.y + height}, back, 6.0f);
    draw_picture(entry, low, {low.x + width, low.y + picture_height});
    const float pad = font * 0.5f;
    list->AddText({low.x + pad, low.y + picture_height + pad * 0.6f}, IM_COL32(228, 231, 236, 255), entry.name.c_str());
    const float first_line = low.y + picture_height + font * 1.45f;
    const ImVec4 clip{low.x, low.y, low.x + width, first_line + 2 * 0.85f * font};
    list->AddText(ImGui::GetFont(), font * 0.85f, {low.x + pad, first_line}, kDim, entry.purpose.c_str(), nullptr,
                  width - 2 * pad, &clip);
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("%s", (entry.mistake.empty() ? entry.purpose : entry.mistake).c_str());
    const bool chosen = pressed || (ImGui::IsItemFocused() && ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Enter)));
    if (chosen && entry.is_look) frame.commands.push_back(NewFromLook{entry.name});
    if (chosen && !entry.is_look) frame.commands.push_back(OpenScene{entry.file});
    ImGui::PopID();
}

void show_cards(PanelFrame& frame, const Gallery& gallery, bool looks) {
    const float available = ImGui::GetContentRegionAvail().x, gap = ImGui::GetStyle().ItemSpacing.x * 1.5f;
    const int columns = std::max(1, static_cast<int>((available + gap) / (ImGui::GetFontSize() * 15.0f + gap)));
    const float width = (available - gap * static_cast<float>(columns - 1)) / static_cast<float>(columns);
    int column = 0;
    for (const GalleryEntry& entry : gallery.entries) {
        if (entry.is_look != looks) continue;
        if (column != 0) ImGui::SameLine(0, gap);
        show_card(frame, entry, width);
        column = (column + 1) % columns;
    }
}

void show_recoveries(PanelFrame& frame, const Gallery& gallery) {
    for (const Recovery& recovery : gallery.recoveries) {
        const std::string name =
            recovery.original.empty() ? "a scene that was never saved" : recovery.original.string();
        ImGui::PushID(recovery.copy.c_str());
        ImGui::AlignTextToFramePadding();
        ImGui::TextColored(ImColor(kWarning), "Unsaved work is left of %s", name.c_str());
        ImGui::SameLine();
        if (ImGui::Button("Take it up")) frame.commands.push_back(TakeRecovery{recovery});
        mark(frame.targets, "recovery.take");
        ImGui::SameLine();
        if (ImGui::Button("Discard")) frame.commands.push_back(DiscardRecovery{recovery});
        mark(frame.targets, "recovery.discard");
        ImGui::PopID();
    }
}

void heading(const char* text) {
    ImGui::Spacing();
    ImGui::TextUnformatted(text);
    ImGui::Spacing();
}

}  // namespace

Gallery make_gallery(const fs::path& scenes_folder, const fs::path& looks_folder) {
    Gallery gallery;
    const fs::path cache = cache_folder();
    for (const fs::path& file : stage::look_files(looks_folder)) gallery.entries.push_back(entry_of(file, true, cache));
    for (const fs::path& file : own_scene_files(scenes_folder)) gallery.entries.push_back(entry_of(file, false, cache));
    for (const fs::path& file : scene_files(scenes_folder)) gallery.entries.push_back(entry_of(file, false, cache));
    gallery.recoveries = find_recoveries(state_folder());
    return gallery;
}

void order_thumbnails(Gallery& gallery, Player& player) {
    if (std::exchange(gallery.is_ordered, true)) return;
    std::vector<ThumbnailOrder> orders;
    for (size_t i = 0; i < gallery.entries.size(); ++i)
        if (gallery.entries[i].texture.number() == 0)
            order_thumbnail(gallery.entries[i], static_cast<int64_t>(i), orders);
    player.order_thumbnails(std::move(orders));
}

void take_thumbnails(Gallery& gallery, std::vector<Thumbnail> thumbnails) {
    for (Thumbnail& thumbnail : thumbnails) {
        GalleryEntry& entry = gallery.entries[static_cast<size_t>(thumbnail.number)];
        if (!thumbnail.picture) {
            entry.mistake = thumbnail.picture.error().message;
            continue;
        }
        if (const auto shown = stage::replace_texture(entry.texture, *thumbnail.picture); !shown)
            entry.mistake = shown.error().message;
        std::error_code ignored;
        fs::create_directories(entry.cached.parent_path(), ignored);
        // A cache that cannot be written only costs time at the next start.
        static_cast<void>(stage::write_png(entry.cached, *thumbnail.picture));
    }
}

void gallery_panel(PanelFrame& frame, const Gallery& gallery, const Area& area) {
    begin_panel("Gallery", area);
    show_recoveries(frame, gallery);
    heading("Looks: a click makes a new scene of one");
    show_cards(frame, gallery, true);
    heading("Scenes");
    show_cards(frame, gallery, false);
    const bool is_drawn = std::all_of(gallery.entries.begin(), gallery.entries.end(), [](const GalleryEntry& entry) {
        return entry.texture.number() != 0 || !entry.mistake.empty();
    });
    if (is_drawn) mark(frame.targets, "drawn");
    ImGui::End();
}

}  // namespace tovu
