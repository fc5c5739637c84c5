#include "run_studio.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "gallery.h"
#include "picture_panel.h"
#include "script.h"
#include "studio.h"
#include "window.h"

namespace tovu {

namespace {

using Clock = std::chrono::steady_clock;
using stage::Done;
using stage::Result;

constexpr double kFrameSeconds = 1.0 / 60.0;      // of the window during playback and in the gallery
constexpr double kIdleFrameSeconds = 1.0 / 10.0;  // otherwise

double ms_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Session {
    Window& window;
    Player& player;
    std::string renderer;
    Studio studio;
    PanelMemory memory;
    Gallery gallery;
    ShownPictures pictures;
    Targets targets;
    Script script;
    Autosave autosave;

    Session(Window& shown, Player& playing) : window(shown), player(playing), renderer(shown.opengl().renderer) {}
};

// Opens a file, or makes a new scene of a look: a name without a slash and without .toml names a look.
Commands opening_commands(const std::string& file) {
    if (file.empty()) return {};
    const bool is_name = file.find('/') == std::string::npos && !file.ends_with(".toml");
    if (is_name) return {NewFromLook{file}};
    return {OpenScene{file}};
}

void show_stage(PanelFrame& frame, Session& session, const Area& whole) {
    const float font = ImGui::GetFontSize();
    const float top = font * 2.6f, bottom = font * 6.0f;
    const bool has_numbers = shows_numbers(frame.memory, whole.width);
    const float left = std::min(font * 25.0f, whole.width * 0.44f);
    const float right = has_numbers ? std::min(font * 16.0f, whole.width * 0.26f) : 0.0f;
    const float middle = whole.height - top - bottom;
    top_bar(frame, {0, 0, whole.width, top});
    parameter_panel(frame, {0, top, left, middle});
    picture_panel(frame, session.pictures, {left, top, whole.width - left - right, middle}, false);
    if (has_numbers) {
        numbers_panel(frame, {whole.width - right, top, right, middle * 0.62f}, session.renderer);
        warnings_panel(frame, {whole.width - right, top + middle * 0.62f, right, middle * 0.38f});
    }
    transport_panel(frame, {0, top + middle, whole.width, bottom});
}

void show_window(PanelFrame& frame, Session& session) {
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    const Area whole{0, 0, size.x, size.y};
    take_keys(frame);
    if (session.studio.page == Page::kGallery) {
        const float top = ImGui::GetFontSize() * 2.6f;
        top_bar(frame, {0, 0, size.x, top});
        gallery_panel(frame, session.gallery, {0, top, size.x, size.y - top});
    } else if (session.studio.fullscreen) {
        picture_panel(frame, session.pictures, whole, true);
    } else {
        show_stage(frame, session, whole);
    }
    if (session.studio.document) {
        save_as_window(frame);
        export_window(frame);
    }
    open_window(frame);
    keys_window(frame);
}

std::string title_of(const Studio& studio) {
    return (studio.document ? document_title(*studio.document) + " - " : "") + "TovuSmoke studio";
}

bool is_moving(const Studio& studio) {
    return studio.orders.playing || studio.report.seeking || studio.page == Page::kGallery;
}

// The longest wait for an event before the next frame, in seconds.
double patience_of(const Session& session) {
    if (session.script.is_running) return 0;
    return is_moving(session.studio) ? kFrameSeconds : kIdleFrameSeconds;
}

void begin_copies(Session& session) {
    if (Result<Autosave> place = begin_autosave(state_folder()))
        session.autosave = *place;
    else
        session.studio.notice = {"A crash would lose unsaved changes: " + place.error().message, true};
}

// Stores the left document for recovery. The gallery offers it.
void keep_left_document(Session& session) {
    Studio& studio = session.studio;
    const Result<Done> kept = autosave(session.autosave, *studio.left_document);
    leave_autosave(session.autosave);
    begin_copies(session);
    const std::string name = scene_file(*studio.left_document).filename().string();
    studio.left_document.reset();
    if (!kept)
        studio.notice = {kept.error().message, true};
    else
        studio.notice = {"The unsaved changes of " + name + " are kept in the gallery (F1)", false};
}

bool show_frame(Session& session) {
    Studio& studio = session.studio;
    const bool open =
        session.window.begin_frame(patience_of(session), studio.text_size, keys_navigate(studio, session.memory));
    if (session.script.frame_seconds > 0) session.player.advance(scene_seconds(session.script));
    PlayReport report = session.player.report();
    take_thumbnails(session.gallery, std::move(report.thumbnails));
    follow_player(studio, std::move(report));
    follow_export(studio);
    Clock::time_point start = Clock::now();
    if (const Result<Done> shown = follow_frame(session.pictures, studio); !shown)
        studio.notice = {shown.error().message, true};
    const double upload_ms = ms_since(start);
    start = Clock::now();
    Commands commands;
    PanelFrame frame{studio, session.memory, commands, session.targets};
    session.targets.places.clear();
    for (const std::string& file : session.window.take_dropped_files()) commands.push_back(OpenScene{file});
    if (studio.page == Page::kGallery && std::exchange(studio.gallery_is_old, false))
        read_gallery(session.gallery, studio.scenes_folder, studio.looks_folder);
    show_window(frame, session);
    const bool was_fullscreen = studio.fullscreen;
    carry_out(studio, commands);
    follow_document(studio);
    session.player.order(studio.orders);
    if (studio.page == Page::kGallery) order_thumbnails(session.gallery, session.player);
    if (studio.fullscreen != was_fullscreen) session.window.set_fullscreen(studio.fullscreen);
    session.window.set_title(title_of(studio));
    if (studio.left_document) keep_left_document(session);
    if (studio.document)
        if (const Result<Done> kept = autosave(session.autosave, *studio.document); !kept)
            studio.notice = {kept.error().message, true};
    studio.studio_ms = ms_since(start);
    start = Clock::now();
    session.window.end_frame();
    studio.window_ms = upload_ms + ms_since(start);
    return open && !studio.quit;
}

}  // namespace

Result<Done> run_studio(const StudioOptions& options) {
    Result<Script> script = options.script.empty() ? Script{} : read_script(options.script);
    if (!script) return script.error();
    WindowOptions opened{.fullscreen = options.fullscreen};
    if (script->width > 0) opened = {script->width, script->height, options.fullscreen};
    opened.frame_seconds = script->frame_seconds;
    Result<Window> window = Window::open(opened);
    if (!window) return window.error();
    Player player(options.smoke_plugin, script->frame_seconds > 0 ? PlayClock::kStepped : PlayClock::kReal);
    Session session(*window, player);
    session.studio.fullscreen = options.fullscreen;
    session.studio.scenes_folder = options.scenes_folder;
    session.studio.looks_folder = options.looks_folder;
    session.studio.smoke_plugin = options.smoke_plugin;
    carry_out(session.studio, opening_commands(options.file));
    if (!options.file.empty() && !session.studio.document) return stage::Error{session.studio.notice.text};
    session.script = std::move(*script);
    session.targets.wanted = session.script.is_running;
    begin_copies(session);
    while (show_frame(session)) {
        if (Result<Done> done = continue_script(session.script, {session.window, session.studio, session.targets});
            !done)
            return done;
    }
    if (!session.studio.document || !has_work(*session.studio.document)) end_autosave(session.autosave);
    return Done{};
}

}  // namespace tovu
