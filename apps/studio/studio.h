// The state of the studio, and what commands do to it.
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

constexpr int kShownFrames = 120;     // for which a parameter that another panel shows is marked
constexpr size_t kKeptNumbers = 240;  // pictures that the graph shows

struct Studio {
    Page page = Page::kGallery;
    std::optional<Document> document;
    uint64_t read_revision = 0;                            // of the document, that `scene` and `scene_error` are of
    std::shared_ptr<const stage::SceneDescription> scene;  // the last text that was right; null before the first
    std::string scene_error;                               // of the present text, a line for each mistake; else empty
    PlayOrders orders;
    PlayReport report;  // the newest, with all its numbers in `numbers`
    std::deque<FrameNumbers> numbers;
    std::string container;        // selected, by its name in the built scene; empty: the first with a plug-in
    std::string shown_parameter;  // to scroll to and to mark; empty: none
    int shown_countdown = 0;      // frames for which the mark stays
    Notice notice;
    int failed_saves = 0;                     // since the start; the notice says why the last one failed
    std::optional<ExportRun> export_run;      // the last one
    std::optional<ExportState> export_state;  // of it
    std::filesystem::path export_file;        // of it
    std::string smoke_plugin;                 // library that replaces the smoke; empty: none
    std::filesystem::path scenes_folder;      // that the gallery lists
    std::filesystem::path looks_folder;       // likewise
    double studio_ms = 0;                     // the panels, commands and the document in the last frame
    double window_ms = 0;                     // the renderer's share of it: uploading the picture, drawing the window
    std::optional<Document> left_document;    // that another one replaced; its unsaved edits are to be kept
    bool gallery_is_old = true;               // to be read again when it is shown
    bool fullscreen = false;
    float text_size = 1.0f;  // factor
    bool quit = false;
};

/// Carries out commands in order. Mistakes become the notice.
void carry_out(Studio& studio, const Commands& commands);

/// Reads a document that changed, and takes the player's report; once a frame.
void follow_document(Studio& studio);
void follow_player(Studio& studio, PlayReport report);

/// Takes what the export has told; once a frame.
void follow_export(Studio& studio);

/// Whether the document has edits that are not in its file.
bool has_work(const Document& document);

/// Of the scene that is shown: frames, at least 1.
int64_t scene_frames(const Studio& studio);

/// The facts of the selected container, or of the first that carries a plug-in; null when there is none.
const ContainerFacts* selected_container(const Studio& studio);

/// The name of the document for people, with its state.
std::string document_title(const Document& document);

/// The line of a message "file:line:column: text" without its place.
std::string without_place(const std::string& line);

}  // namespace tovu
