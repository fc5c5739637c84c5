#include "studio.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "document/recent_files.h"
#include "orbit.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Result;

void note(Studio& studio, const Result<Done>& done) {
    if (!done) studio.notice = {done.error().message, true};
}

// Replaces the document. If opening failed, shows a notice, keeps the present document and returns false.
bool open(Studio& studio, Result<Document> opened) {
    if (!opened) {
        studio.notice = {opened.error().message, true};
        return false;
    }
    if (studio.document) end_change(*studio.document);
    if (studio.document && has_work(*studio.document)) studio.left_document = std::move(studio.document);
    studio.document = std::move(*opened);
    studio.read_revision = studio.document->revision - 1;
    studio.scene = nullptr;
    studio.scene_error.clear();
    studio.container.clear();
    studio.numbers.clear();
    studio.page = Page::kStage;
    studio.notice = {};
    studio.orders.playing = true;
    studio.orders.loop = true;
    studio.orders.speed = 1.0;
    studio.orders.view = {};
    studio.orders.scene = nullptr;
    studio.orders.measures_framing = studio.document->kind == DocumentKind::kLook;
    ++studio.orders.seek_number;
    studio.orders.seek_frame = 0;
    follow_document(studio);
    if (studio.scene) studio.orders.range = {0, scene_frames(studio) - 1};
    return true;
}

// Applies the measured framing and plays the scene.
void take_framing(Studio& studio) {
    PlayOrders& orders = studio.orders;
    if (!orders.measures_framing || studio.report.framed_scene != orders.scene_number) return;
    orders.measures_framing = false;
    ++orders.scene_number;
    const Framing& framing = studio.report.framing;
    if (studio.document->kind == DocumentKind::kScene) {
        frame_new_scene(*studio.document, framing);
        studio.read_revision = studio.document->revision - 1;
        return;
    }
    stage::CameraDescription camera;  // a look file has no camera, so only the view changes
    camera.position = framing.camera;
    orders.view.camera = camera_of(camera);
}

// Adds the file to the recent files of the gallery. Ignores errors.
void remember(const std::filesystem::path& file) {
    std::error_code ignored;
    static_cast<void>(remember_file(state_folder(), std::filesystem::absolute(file, ignored).lexically_normal()));
}

// The notice about an opened file.
Notice notice_of_opened(const Document& document) {
    if (document.file.empty()) return {"Comes with the program: Save makes a copy", false};
    for (const Recovery& recovery : find_recoveries(state_folder()))
        if (recovery.original == document.file) return {"Unsaved work of this file is in the gallery (F1)", true};
    return {};
}

void open_file(Studio& studio, const std::filesystem::path& file) {
    if (!open(studio, open_document(file))) return;
    remember(file);
    studio.notice = notice_of_opened(*studio.document);
}

void set_keys(Document& document, const SetKeys& command, Studio& studio) {
    begin_change(document, command.label);
    for (const auto& [path, value] : command.values)
        note(studio, value.empty() ? remove_key(document, path) : set_key(document, path, value));
    end_change(document);
}

void save(Studio& studio, const Result<Done>& saved) {
    if (!saved) {
        studio.notice = {saved.error().message, true};
        ++studio.failed_saves;
        return;
    }
    remember(studio.document->file);
    studio.notice = {"Saved " + studio.document->file.string(), false};
}

void save_look_of(Studio& studio, const LookToSave& look) {
    if (!studio.report.facts) return;
    const std::vector<ContainerFacts>& containers = studio.report.facts->containers;
    const auto container = std::find_if(containers.begin(), containers.end(),
                                        [](const ContainerFacts& one) { return one.noted != nullptr; });
    if (container == containers.end()) return;
    const Result<std::vector<std::string>> saved = save_look(*studio.document, look, container->noted->plugin);
    if (!saved) {
        studio.notice = {with_scene_named(*studio.document, saved.error().message), true};
        ++studio.failed_saves;
        return;
    }
    remember(look.file);
    studio.notice = {
        fmt::format("Saved the look {}{}{}", look.file.string(), saved->empty() ? "" : "; ", fmt::join(*saved, "; ")),
        !saved->empty()};
}

void start_export(Studio& studio, const StartExport& command) {
    const Document& document = *studio.document;
    studio.export_run.reset();
    studio.export_state.reset();
    Result<ExportRun> run = ExportRun::start(
        {scene_text(document), scene_file(document), command.output, command.frames, studio.smoke_plugin});
    if (!run) {
        studio.notice = {run.error().message, true};
        return;
    }
    studio.export_file = command.output;
    studio.export_run = std::move(*run);
    studio.export_state = ExportState{};
}

// Commands that need no document.
struct General {
    Studio& studio;

    bool operator()(const OpenScene& command) const {
        open_file(studio, command.file);
        return true;
    }
    bool operator()(const NewFromLook& command) const {
        if (open(studio, new_scene_of_look(command.look, std::filesystem::current_path())))
            studio.orders.measures_framing = true;
        return true;
    }
    bool operator()(const TakeRecovery& command) const {
        if (open(studio, recover(command.recovery))) discard_recovery(command.recovery);
        return true;
    }
    bool operator()(const DiscardRecovery& command) const {
        discard_recovery(command.recovery);
        studio.gallery_is_old = true;
        return true;
    }
    bool operator()(const ShowGallery&) const {
        studio.gallery_is_old = studio.page != Page::kGallery;
        studio.page = Page::kGallery;
        studio.orders.playing = false;
        return true;
    }
    bool operator()(const CancelExport&) const {
        if (studio.export_run) studio.export_run->cancel();
        return true;
    }
    bool operator()(const SetFullscreen& command) const {
        studio.fullscreen = command.fullscreen;
        return true;
    }
    bool operator()(const SetTextSize& command) const {
        studio.text_size = std::clamp(command.factor, 0.5f, 3.0f);
        return true;
    }
    bool operator()(const Quit&) const {
        studio.quit = true;
        return true;
    }
    template <class Other>
    bool operator()(const Other&) const {
        return false;
    }
};

// Commands about the open document and the scene that is played.
struct OfDocument {
    Studio& studio;
    Document& document;

    void operator()(const SelectContainer& command) const { studio.container = command.container; }
    void operator()(const ShowParameter& command) const {
        studio.container = command.container;
        studio.shown_parameter = command.parameter;
        studio.shown_countdown = kShownFrames;
    }
    void operator()(const SetParameter& command) const {
        note(studio, set_parameter(document, command.container, command.parameter, command.value, command.label));
    }
    void operator()(const ResetParameter& command) const {
        note(studio, reset_parameter(document, command.container, command.parameter, command.label));
    }
    void operator()(const ResetParameters& command) const {
        note(studio, reset_parameters(document, command.container));
    }
    void operator()(const SetContainerKey& command) const {
        note(studio, set_container_key(document, command.container, command.key, command.value));
    }
    void operator()(const PressButton& command) const {
        studio.orders.press = {studio.orders.press.number + 1, command.container, command.button};
    }
    void operator()(const SetKeys& command) const { set_keys(document, command, studio); }
    void operator()(const BeginChange& command) const { begin_change(document, command.label); }
    void operator()(const EndChange&) const { end_change(document); }
    void operator()(const Undo&) const { undo(document); }
    void operator()(const Redo&) const { redo(document); }
    void operator()(const ShowState& command) const { show_state(document, command.state); }
    void operator()(const CopyToOtherState&) const { copy_to_other_state(document); }
    void operator()(const Save& command) const {
        save(studio, save_document(document, command.overwrite ? Overwrite::kYes : Overwrite::kNo));
    }
    void operator()(const SaveAs& command) const {
        save(studio, save_document_as(document, command.file, command.overwrite ? Overwrite::kYes : Overwrite::kNo));
    }
    void operator()(const SaveLook& command) const { save_look_of(studio, command.look); }
    void operator()(const StartExport& command) const { start_export(studio, command); }
    void operator()(const SetPlaying& command) const {
        PlayOrders& orders = studio.orders;
        orders.playing = command.playing;
        if (!command.playing || !studio.report.at_end) return;
        ++orders.seek_number;
        orders.seek_frame = 0;
    }
    void operator()(const Seek& command) const {
        ++studio.orders.seek_number;
        studio.orders.seek_frame = std::clamp<int64_t>(command.frame, 0, scene_frames(studio) - 1);
    }
    void operator()(const CancelSeek&) const { ++studio.orders.cancel_number; }
    void operator()(const SetSpeed& command) const { studio.orders.speed = command.speed; }
    void operator()(const SetLoop& command) const {
        const int64_t last = scene_frames(studio) - 1;
        studio.orders.loop = command.loop;
        studio.orders.range.last = std::clamp<int64_t>(command.range.last, 0, last);
        studio.orders.range.first = std::clamp<int64_t>(command.range.first, 0, studio.orders.range.last);
    }
    void operator()(const SetView& command) const { studio.orders.view = command.view; }
    template <class Other>
    void operator()(const Other&) const {}
};

}  // namespace

void carry_out(Studio& studio, const Commands& commands) {
    for (const Command& command : commands) {
        if (std::visit(General{studio}, command) || !studio.document) continue;
        std::visit(OfDocument{studio, *studio.document}, command);
    }
}

void follow_document(Studio& studio) {
    if (!studio.document || studio.read_revision == studio.document->revision) return;
    studio.read_revision = studio.document->revision;
    Result<stage::SceneDescription> scene =
        stage::read_scene(scene_text(*studio.document), scene_file(*studio.document));
    studio.scene_error = scene ? "" : with_scene_named(*studio.document, scene.error().message);
    if (!scene) return;
    const bool whole = !studio.scene || studio.orders.range.last == scene_frames(studio) - 1;
    studio.scene = std::make_shared<const stage::SceneDescription>(std::move(*scene));
    studio.orders.scene = studio.scene;
    ++studio.orders.scene_number;
    FrameRange& range = studio.orders.range;
    const int64_t last = scene_frames(studio) - 1;
    range.last = whole ? last : std::min(range.last, last);
    range.first = std::min(range.first, range.last);
}

void follow_player(Studio& studio, PlayReport report) {
    studio.numbers.insert(studio.numbers.end(), report.numbers.begin(), report.numbers.end());
    while (studio.numbers.size() > kKeptNumbers) studio.numbers.pop_front();
    report.numbers.clear();
    studio.report = std::move(report);
    if (studio.document) studio.report.error = with_scene_named(*studio.document, std::move(studio.report.error));
    take_framing(studio);
    if (studio.report.at_end) studio.orders.playing = false;
    if (studio.shown_countdown > 0 && --studio.shown_countdown == 0) studio.shown_parameter.clear();
}

void follow_export(Studio& studio) {
    if (!studio.export_run || studio.export_state->ended) return;
    studio.export_state = studio.export_run->follow();
    if (studio.document)
        studio.export_state->error = with_scene_named(*studio.document, std::move(studio.export_state->error));
    if (!studio.export_state->ended) return;
    if (studio.export_state->error.empty())
        studio.notice = {"Exported " + studio.export_file.string(), false};
    else
        studio.notice = {"Export: " + studio.export_state->error, studio.export_state->error != "cancelled"};
}

std::string document_title(const Document& document) {
    if (document.file.empty()) return document.name + " (not saved yet)";
    return document.file.filename().string() + (has_unsaved_changes(document) ? " •" : "");
}

bool has_work(const Document& document) {
    return has_unsaved_changes(document) && (document.states[0].applied > 0 || document.states[1].applied > 0);
}

int64_t scene_frames(const Studio& studio) {
    return studio.scene ? stage::frame_count(*studio.scene) : 1;
}

bool plays_whole_scene(const Studio& studio) {
    return studio.orders.range.first == 0 && studio.orders.range.last == scene_frames(studio) - 1;
}

const ContainerFacts* selected_container(const Studio& studio) {
    if (!studio.report.facts) return nullptr;
    const ContainerFacts* first = nullptr;
    for (const ContainerFacts& container : studio.report.facts->containers) {
        if (container.name == studio.container) return &container;
        if (first == nullptr && container.noted) first = &container;
    }
    return first;
}

std::string without_place(const std::string& line) {
    size_t end = 0;
    for (int colons = 0; colons < 3; ++colons) {
        end = line.find(':', end);
        if (end == std::string::npos) return line;
        ++end;
    }
    return line.substr(std::min(line.find_first_not_of(' ', end), line.size()));
}

}  // namespace tovu
