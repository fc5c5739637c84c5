#include "gallery.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "document/recent_files.h"
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
using stage::Done;
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

// Names a picture in the cache by what it shows. Of a look, a new scene shows another picture than its file.
fs::path cached_picture(const GalleryEntry& entry, const std::string& text) {
    stage::Fnv1a digest;
    digest.add(std::string_view(text));
    digest.add(std::string_view(entry.part == GalleryPart::kLooks ? "new scene" : "file"));
    return cache_folder() / fmt::format("{}_{:016x}.png", entry.name, digest.value);
}

void load_cached_picture(GalleryEntry& entry) {
    std::error_code ignored;
    if (!fs::exists(entry.cached, ignored)) return;
    const Result<stage::Picture> picture = stage::read_picture(entry.cached);
    if (!picture) return;
    if (const auto shown = stage::replace_texture(entry.texture, *picture); !shown)
        entry.mistake = shown.error().message;
}

// old: entries whose pictures may be taken over.
GalleryEntry entry_of(const fs::path& file, GalleryPart part, std::vector<GalleryEntry>& old) {
    GalleryEntry entry{part, file.stem().string(), "", file, {}, {}, {}};
    const std::string text = stage::read_whole_file(file);
    entry.purpose = first_comment(text);
    if (const Result<stage::LookDescription> look = stage::load_look_file(file)) entry.purpose = look->purpose;
    entry.cached = cached_picture(entry, text);
    const auto same = std::find_if(old.begin(), old.end(), [&](const GalleryEntry& other) {
        return other.cached == entry.cached && other.texture.number() != 0;
    });
    if (same != old.end())
        entry.texture = std::move(same->texture);
    else
        load_cached_picture(entry);
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

// Those of the current folder hide others of the same name.
std::vector<fs::path> all_look_files(const fs::path& looks_folder) {
    std::error_code ignored;
    const fs::path own = fs::current_path(ignored) / "looks";
    std::vector<fs::path> files = stage::look_files(own);
    if (fs::equivalent(own, looks_folder, ignored)) return files;
    for (const fs::path& file : stage::look_files(looks_folder))
        if (!fs::exists(own / file.filename(), ignored)) files.push_back(file);
    return files;
}

Result<stage::SceneDescription> scene_of(const GalleryEntry& entry) {
    const Result<Document> document = entry.part == GalleryPart::kLooks
                                          ? new_scene_of_look(entry.name, fs::current_path())
                                          : open_document(entry.file);
    if (!document) return document.error();
    return stage::read_scene(scene_text(*document), scene_file(*document));
}

void order_thumbnail(GalleryEntry& entry, std::vector<ThumbnailOrder>& orders) {
    Result<stage::SceneDescription> scene = scene_of(entry);
    if (!scene) {
        entry.mistake = scene.error().message;
        return;
    }
    scene->size = {scene->size[0] * kThumbnailHeight / scene->size[1], kThumbnailHeight};
    if (!scene->background) scene->background = stage::Triple{0.05f, 0.06f, 0.08f};
    const auto frame = static_cast<int64_t>(kShownShare * static_cast<double>(stage::frame_count(*scene)));
    orders.push_back(
        {entry.cached.string(), std::make_shared<const stage::SceneDescription>(std::move(*scene)), frame});
}

// The text on at most `lines` lines; "…" stands for what does not fit. size: of the type, width: of a line, pixels.
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

void show_tip(const GalleryEntry& entry) {
    ImGui::BeginTooltip();
    ImGui::TextDisabled("%s", entry.file.c_str());
    ImGui::TextUnformatted((entry.mistake.empty() ? entry.purpose : entry.mistake).c_str());
    ImGui::EndTooltip();
}

void show_card(PanelFrame& frame, const GalleryEntry& entry, float width) {
    const float font = ImGui::GetFontSize();
    const float picture_height = width * 9.0f / 16.0f;
    const float height = picture_height + font * 3.7f;
    ImGui::PushID(entry.file.c_str());
    ImGui::PushID(static_cast<int>(entry.part));
    const ImVec2 low = ImGui::GetCursorScreenPos();
    const bool pressed = ImGui::InvisibleButton("card", {width, height});
    constexpr const char* kMarks[] = {"recent.", "look.", "scene."};
    mark(frame.targets, kMarks[static_cast<size_t>(entry.part)] + entry.name);
    const bool hovered = ImGui::IsItemHovered() || ImGui::IsItemFocused();
    ImDrawList* list = ImGui::GetWindowDrawList();
    const ImU32 back = hovered ? IM_COL32(50, 58, 70, 255) : IM_COL32(37, 42, 50, 255);
    list->AddRectFilled(low, {low.x + width, low.y + height}, back, 6.0f);
    draw_picture(entry, low, {low.x + width, low.y + picture_height});
    const float pad = font * 0.5f, small = font * 0.85f, text_width = width - 2 * pad;
    list->AddText({low.x + pad, low.y + picture_height + pad * 0.6f}, IM_COL32(228, 231, 236, 255),
                  fitted(entry.name, font, text_width, 1).c_str());
    list->AddText(ImGui::GetFont(), small, {low.x + pad, low.y + picture_height + font * 1.45f}, kDim,
                  fitted(entry.purpose, small, text_width, 2).c_str());
    if (ImGui::IsItemHovered()) show_tip(entry);
    const bool chosen = pressed || (ImGui::IsItemFocused() && ImGui::IsKeyPressed(ImGui::GetKeyIndex(ImGuiKey_Enter)));
    if (chosen && entry.part == GalleryPart::kLooks) frame.commands.push_back(NewFromLook{entry.name});
    if (chosen && entry.part != GalleryPart::kLooks) frame.commands.push_back(OpenScene{entry.file});
    ImGui::PopID();
    ImGui::PopID();
}

void show_cards(PanelFrame& frame, const Gallery& gallery, GalleryPart part, const char* heading) {
    const auto is_here = [part](const GalleryEntry& entry) { return entry.part == part; };
    if (std::none_of(gallery.entries.begin(), gallery.entries.end(), is_here)) return;
    ImGui::Spacing();
    ImGui::TextUnformatted(heading);
    ImGui::Spacing();
    const float available = ImGui::GetContentRegionAvail().x, gap = ImGui::GetStyle().ItemSpacing.x * 1.5f;
    const int columns = std::max(1, static_cast<int>((available + gap) / (ImGui::GetFontSize() * 15.0f + gap)));
    const float width = (available - gap * static_cast<float>(columns - 1)) / static_cast<float>(columns);
    int column = 0;
    for (const GalleryEntry& entry : gallery.entries) {
        if (!is_here(entry)) continue;
        if (column != 0) ImGui::SameLine(0, gap);
        show_card(frame, entry, width);
        column = (column + 1) % columns;
    }
}

void show_recoveries(PanelFrame& frame, const Gallery& gallery) {
    for (const Recovery& recovery : gallery.recoveries) {
        ImGui::PushID(recovery.copy.c_str());
        ImGui::AlignTextToFramePadding();
        ImGui::TextColored(ImColor(kWarning), "Unsaved work is left of %s", recovery.name.c_str());
        ImGui::SameLine();
        if (ImGui::Button("Take it up")) frame.commands.push_back(TakeRecovery{recovery});
        mark(frame.targets, "recovery.take");
        ImGui::SameLine();
        if (ImGui::Button("Discard")) frame.commands.push_back(DiscardRecovery{recovery});
        mark(frame.targets, "recovery.discard");
        ImGui::PopID();
    }
}

}  // namespace

void read_gallery(Gallery& gallery, const fs::path& scenes_folder, const fs::path& looks_folder) {
    std::vector<GalleryEntry> old = std::exchange(gallery.entries, {});
    const auto add = [&](GalleryPart part, const std::vector<fs::path>& files) {
        for (const fs::path& file : files) gallery.entries.push_back(entry_of(file, part, old));
    };
    add(GalleryPart::kRecent, recent_files(state_folder()));
    add(GalleryPart::kLooks, all_look_files(looks_folder));
    add(GalleryPart::kScenes, own_scene_files(scenes_folder));
    add(GalleryPart::kScenes, scene_files(scenes_folder));
    gallery.recoveries = find_recoveries(state_folder());
    gallery.is_ordered = false;
}

void order_thumbnails(Gallery& gallery, Player& player) {
    if (std::exchange(gallery.is_ordered, true)) return;
    std::vector<ThumbnailOrder> orders;
    for (GalleryEntry& entry : gallery.entries)
        if (entry.texture.number() == 0) order_thumbnail(entry, orders);
    player.order_thumbnails(std::move(orders));
}

void take_thumbnails(Gallery& gallery, std::vector<Thumbnail> thumbnails) {
    for (Thumbnail& thumbnail : thumbnails) {
        for (GalleryEntry& entry : gallery.entries) {
            if (entry.cached != thumbnail.name) continue;
            const Result<Done> shown = thumbnail.picture ? stage::replace_texture(entry.texture, *thumbnail.picture)
                                                         : Result<Done>(thumbnail.picture.error());
            if (!shown) entry.mistake = shown.error().message;
        }
        if (!thumbnail.picture) continue;
        std::error_code ignored;
        fs::create_directories(fs::path(thumbnail.name).parent_path(), ignored);
        // A cache that cannot be written only costs time at the next start.
        static_cast<void>(stage::write_png(thumbnail.name, *thumbnail.picture));
    }
}

void gallery_panel(PanelFrame& frame, const Gallery& gallery, const Area& area) {
    begin_panel("Gallery", area);
    show_recoveries(frame, gallery);
    show_cards(frame, gallery, GalleryPart::kRecent, "Recent files");
    show_cards(frame, gallery, GalleryPart::kLooks, "Looks: a click makes a new scene of one");
    show_cards(frame, gallery, GalleryPart::kScenes, "Scenes");
    const bool is_drawn = std::all_of(gallery.entries.begin(), gallery.entries.end(), [](const GalleryEntry& entry) {
        return entry.texture.number() != 0 || !entry.mistake.empty();
    });
    if (is_drawn) mark(frame.targets, "drawn");
    ImGui::End();
}

}  // namespace tovu
