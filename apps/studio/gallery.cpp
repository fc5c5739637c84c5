#include "gallery.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

#include "document/recent_files.h"
#include "stage/assets/picture_file.h"
#include "stage/output/png_file.h"
#include "stage/output/whole_file.h"
#include "stage/replay/fnv1a.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;
using stage::Done;
using stage::Result;

constexpr int32_t kThumbnailHeight = 216;
constexpr double kShownShare = 0.6;  // the time of a scene's picture, as a share of its length

fs::path cache_folder() {
    if (const char* folder = std::getenv("XDG_CACHE_HOME"); folder != nullptr && *folder != '\0')
        return fs::path(folder) / "tovu";
    const char* home = std::getenv("HOME");
    return (home != nullptr ? fs::path(home) / ".cache" : fs::temp_directory_path()) / "tovu";
}

// The first line of the comment at the top of a scene.
std::string first_comment(const std::string& text) {
    if (!text.starts_with("#")) return "";
    std::string line = text.substr(1, text.find('\n') - 1);
    line.erase(0, line.find_first_not_of(' '));
    return line;
}

// The picture's file in the cache, named by a digest of the content. The part is in the digest, since a look file has
// another picture than a new scene with the look.
fs::path cached_picture(const GalleryEntry& entry, const std::string& text) {
    stage::Fnv1a digest;
    digest.add(std::string_view(text));
    digest.add(std::string_view(entry.part == GalleryPart::kLooks ? "framed" : "file"));
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

// old: previous entries, whose pictures are reused if still valid.
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

// The scenes of the current folder, which the studio proposes for saving.
std::vector<fs::path> own_scene_files(const fs::path& scenes_folder) {
    std::error_code ignored;
    const fs::path folder = fs::current_path(ignored);
    if (fs::equivalent(folder, scenes_folder, ignored)) return {};
    std::vector<fs::path> files = scene_files(folder);
    std::erase_if(files, [](const fs::path& file) { return !stage::load_scene_file(file); });
    return files;
}

// Looks of the current folder hide installed looks of the same name.
std::vector<fs::path> all_look_files(const fs::path& looks_folder) {
    std::error_code ignored;
    const fs::path own = fs::current_path(ignored) / "looks";
    std::vector<fs::path> files = stage::look_files(own);
    if (fs::equivalent(own, looks_folder, ignored)) return files;
    for (const fs::path& file : stage::look_files(looks_folder))
        if (!fs::exists(own / file.filename(), ignored)) files.push_back(file);
    return files;
}

// Orders the picture of an entry. The picture of a look is the first picture of a new scene with it.
void order_thumbnail(GalleryEntry& entry, std::vector<ThumbnailOrder>& orders) {
    const Result<Document> document = entry.part == GalleryPart::kLooks
                                          ? new_scene_of_look(entry.name, fs::current_path())
                                          : open_document(entry.file);
    Result<stage::SceneDescription> scene =
        document ? stage::read_scene(scene_text(*document), scene_file(*document)) : document.error();
    if (!scene) {
        entry.mistake = scene.error().message;
        return;
    }
    scene->size = {scene->size[0] * kThumbnailHeight / scene->size[1], kThumbnailHeight};
    if (!scene->background) scene->background = stage::Triple{0.05f, 0.06f, 0.08f};
    const bool is_look = entry.part == GalleryPart::kLooks || document->kind == DocumentKind::kLook;
    const auto frame = static_cast<int64_t>(kShownShare * static_cast<double>(stage::frame_count(*scene)));
    orders.push_back({entry.cached.string(), std::make_shared<const stage::SceneDescription>(std::move(*scene)),
                      is_look ? 0 : frame, is_look});
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
        // Ignores errors: a picture that is not in the cache is drawn again at the next start.
        static_cast<void>(stage::write_png(thumbnail.name, *thumbnail.picture));
    }
}

}  // namespace tovu
