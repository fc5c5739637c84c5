// The gallery: looks and scenes with small pictures, which the player draws and the user's cache keeps.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "document/autosave.h"
#include "panels.h"
#include "player.h"
#include "stage/opengl/textures.h"

namespace tovu {

/// What the gallery lists, in its order: files that were opened or saved last, looks to make a scene of, and scenes.
enum class GalleryPart { kRecent, kLooks, kScenes };

struct GalleryEntry {
    GalleryPart part = GalleryPart::kScenes;
    std::string name;
    std::string purpose;  // one line
    std::filesystem::path file;
    std::filesystem::path cached;  // the picture's file in the cache; its name is a digest of what it shows
    stage::Texture texture;        // empty until it is there
    std::string mistake;           // why there is no picture
};

struct Gallery {
    std::vector<GalleryEntry> entries;  // in the order of their parts
    std::vector<Recovery> recoveries;   // what crashes left
    bool is_ordered = false;            // the pictures that the cache lacks were ordered
};

/// Lists the recent files, the looks and scenes of the current folder and those of two other folders. Keeps the
/// pictures of what has not changed and loads those that the cache has.
void read_gallery(Gallery& gallery, const std::filesystem::path& scenes_folder,
                  const std::filesystem::path& looks_folder);

/// Orders the pictures that are missing, the first time after the gallery was read.
void order_thumbnails(Gallery& gallery, Player& player);

/// Takes pictures that the player has drawn, and writes them into the cache.
void take_thumbnails(Gallery& gallery, std::vector<Thumbnail> thumbnails);

void gallery_panel(PanelFrame& frame, const Gallery& gallery, const Area& area);

}  // namespace tovu
