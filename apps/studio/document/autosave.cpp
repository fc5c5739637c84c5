#include "autosave.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>

#include "stage/output/whole_file.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;
using stage::Done;
using stage::Error;
using stage::Result;

constexpr int kMaxPlaces = 1000;

fs::path lock_file(const fs::path& copy) {
    return fs::path(copy).replace_extension(".lock");
}

// The descriptor of the locked file, or -1 if the lock is taken or the file cannot be opened. The end of the process
// releases the lock.
int take_lock(const fs::path& file) {
    const int lock = open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0) return lock;
    if (lock >= 0) close(lock);
    return -1;
}

nlohmann::json json_of(const Document& document) {
    return {{"kind", document.kind == DocumentKind::kLook ? "look" : "scene"},
            {"file", document.file.string()},
            {"name", document.name},
            {"folder", document.folder.string()},
            {"on_disk", document.on_disk},
            {"texts", {document.states[0].text, document.states[1].text}},
            {"shown", document.shown}};
}

Document document_of(const nlohmann::json& json) {
    Document document;
    document.kind = json.at("kind") == "look" ? DocumentKind::kLook : DocumentKind::kScene;
    document.file = json.at("file").get<std::string>();
    document.name = json.value("name", "untitled.toml");
    document.folder = json.at("folder").get<std::string>();
    document.on_disk = json.at("on_disk").get<std::string>();
    for (size_t i = 0; i < document.states.size(); ++i)
        document.states[i].text = json.at("texts").at(i).get<std::string>();
    document.shown = std::min<size_t>(json.at("shown").get<size_t>(), 1);
    document.revision = 1;  // autosave stores documents from revision 1 on
    return document;
}

}  // namespace

fs::path state_folder() {
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') return fs::path(state) / "tovu";
    const char* home = std::getenv("HOME");
    return fs::path(home == nullptr ? "/tmp" : home) / ".local" / "state" / "tovu";
}

Result<Autosave> begin_autosave(const fs::path& folder) {
    std::error_code code;
    fs::create_directories(folder, code);
    for (int i = 1; i <= kMaxPlaces && !code; ++i) {
        const fs::path file = folder / fmt::format("autosave-{}.json", i);
        if (fs::exists(file, code)) continue;  // a copy of another process, running or crashed
        const int lock = take_lock(lock_file(file));
        if (lock >= 0) return Autosave{file, lock};
        if (errno != EWOULDBLOCK) code.assign(errno, std::generic_category());
    }
    return Error{
        fmt::format("{}: unsaved changes cannot be stored in this folder: {}", folder.string(), code.message())};
}

Result<Done> autosave(Autosave& place, const Document& document) {
    const bool is_needed = document.revision > 0 && has_unsaved_changes(document);
    if (!document.change_label.empty()) return Done{};
    if (place.lock < 0 || (place.revision == document.revision && place.is_written == is_needed)) return Done{};
    place.revision = document.revision;
    place.is_written = is_needed;
    if (!is_needed) {
        std::error_code ignored;
        fs::remove(place.file, ignored);
        return Done{};
    }
    return stage::write_whole_file(place.file,
                                   json_of(document).dump(1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void end_autosave(Autosave& place) {
    if (place.lock < 0) return;
    std::error_code ignored;
    fs::remove(place.file, ignored);
    fs::remove(lock_file(place.file), ignored);
    leave_autosave(place);
}

void leave_autosave(Autosave& place) {
    if (place.lock >= 0) close(place.lock);
    place = {};
}

std::vector<Recovery> find_recoveries(const fs::path& folder) {
    std::vector<Recovery> found;
    std::error_code code;
    for (fs::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code)) {
        if (entry->path().extension() != ".json") continue;
        const int lock = take_lock(lock_file(entry->path()));
        if (lock < 0) continue;
        close(lock);
        Recovery recovery{entry->path(), {}, "a scene", entry->last_write_time(code)};
        if (const Result<Document> document = recover(recovery)) {
            recovery.original = document->file;
            recovery.name =
                document->file.empty() ? document->name + ", which was never saved" : document->file.string();
        }
        found.push_back(recovery);
    }
    std::sort(found.begin(), found.end(), [](const Recovery& a, const Recovery& b) { return a.time > b.time; });
    return found;
}

Result<Document> recover(const Recovery& recovery) {
    try {
        return document_of(nlohmann::json::parse(stage::read_whole_file(recovery.copy)));
    } catch (const nlohmann::json::exception& error) {
        return Error{fmt::format("{}: is not a copy of a document: {}", recovery.copy.string(), error.what())};
    }
}

void discard_recovery(const Recovery& recovery) {
    std::error_code ignored;
    fs::remove(recovery.copy, ignored);
    fs::remove(lock_file(recovery.copy), ignored);
}

}  // namespace tovu
