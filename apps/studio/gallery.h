// The gallery: looks and scenes with small pictures. The player draws the pictures, and a cache folder stores them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "document/autosave.h"
#include "panels.h"
#include "player.h"
#include "stage/opengl/textures.h"

namespace tovu {

/// The parts of the gallery in display order: recent files, looks for a new scene, scenes.
enum class GalleryPart { kRecent, kLooks, kScenes };

struct GalleryEntry {
    GalleryPart part = GalleryPart::kScenes;
    std::string name;
    std::string purpose;  // one line
    std::filesystem::path file;
    std::filesystem::path cached;  // the picture's file in the cache; its name is a digest of the content
    stage::Texture texture;        // empty until the picture is drawn
    std::string mistake;           // why the picture cannot be drawn
};

struct Gallery {
    std::vector<GalleryEntry> entries;  // in the order of their parts
    std::vector<Recovery> recoveries;   // unsaved documents
    bool is_ordered = false;            // the missing pictures were ordered
};

/// Lists the recent files, and the looks and scenes of the current folder and of the two given folders. Keeps pictures
/// that are still valid, and loads others from the cache.
void read_gallery(Gallery& gallery, const std::filesystem::path& scenes_folder,
                  const std::filesystem::path& looks_folder);

/// Orders the missing pictures, once after each read_gallery.
void order_thumbnails(Gallery& gallery, Player& player);

/// Stores pictures from the player in the gallery and in the cache.
void take_thumbnails(Gallery& gallery, std::vector<Thumbnail> thumbnails);

void gallery_panel(PanelFrame& frame, const Gallery& gallery, const Area& area);

}  // namespace tovu
