// The state of the studio, and the functions that change it.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "commands.h"
#include "document/document.h"
#include "export_run.h"
#include "player.h"

namespace tovu {

enum class Page { kGallery, kStage };

/// A message in the status line.
struct Notice {
    std::string text;
    bool is_error = false;
};

constexpr int kShownFrames = 120;     // frames for which a shown parameter stays marked
constexpr size_t kKeptNumbers = 240;  // number of pictures in the graph

struct Studio {
    Page page = Page::kGallery;
    std::optional<Document> document;
    uint64_t read_revision = 0;  // revision of the document that `scene` and `scene_error` belong to
    std::shared_ptr<const stage::SceneDescription>
        scene;                // from the latest text without mistakes; null before the first
    std::string scene_error;  // a line for each mistake in the present text, or empty
    PlayOrders orders;
    PlayReport report;  // newest; its numbers are moved to `numbers`
    std::deque<FrameNumbers> numbers;
    std::string container;        // name of the selected container in the built scene; empty: the first with a plug-in
    std::string shown_parameter;  // parameter to scroll to and to mark; empty: none
    int shown_countdown = 0;      // frames until the mark disappears
    Notice notice;
    int failed_saves = 0;                     // since the start; the notice has the reason of the latest
    std::optional<ExportRun> export_run;      // the latest export
    std::optional<ExportState> export_state;  // of the latest export
    std::filesystem::path export_file;        // of the latest export
    std::string smoke_plugin;                 // library that replaces the smoke; empty: none
    std::filesystem::path scenes_folder;      // scenes for the gallery
    std::filesystem::path looks_folder;       // looks for the gallery
    double studio_ms = 0;                     // time of panels, commands and document in the latest frame
    double window_ms = 0;                     // time to upload the picture and draw the window in the latest frame
    std::optional<Document> left_document;    // replaced document with unsaved edits, to be stored for recovery
    bool gallery_is_old = true;               // the gallery must be read again before it is shown
    bool fullscreen = false;
    float text_size = 1.0f;  // factor
    bool quit = false;
};

/// Carries out commands in order. Errors become the notice.
void carry_out(Studio& studio, const Commands& commands);

/// Reads the scene again if the document changed. Call it once a frame.
void follow_document(Studio& studio);

/// Stores the player's report. Call it once a frame.
void follow_player(Studio& studio, PlayReport report);

/// Updates the state of the export. Call it once a frame.
void follow_export(Studio& studio);

/// Whether the document has edits that are not saved.
bool has_work(const Document& document);

/// The number of frames of the scene, at least 1.
int64_t scene_frames(const Studio& studio);

/// True if the range between In and Out is the whole scene.
bool plays_whole_scene(const Studio& studio);

/// The facts of the selected container, or of the first container with a plug-in; null if there is none.
const ContainerFacts* selected_container(const Studio& studio);

/// The displayed name of the document, with its state.
std::string document_title(const Document& document);

/// The text of a message "file:line:column: text".
std::string without_place(const std::string& line);

}  // namespace tovu
