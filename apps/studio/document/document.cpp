#include "document.h"

#include <fmt/format.h>
#include <toml++/toml.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <utility>

#include "file_paths.h"
#include "stage/file_ending.h"
#include "stage/output/whole_file.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/shipped_files.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Error;
using stage::Result;

constexpr const char* kPreviewSeconds = "10";  // length of the scene that shows a look

std::string camera_text(const Framing& framing) {
    return fmt::format("[{:.6g}, {:.6g}, {:.6g}]", framing.camera[0], framing.camera[1], framing.camera[2]);
}

std::optional<toml::table> parsed(const std::string& text) {
    try {
        return toml::parse(text);
    } catch (const toml::parse_error&) {
        return std::nullopt;
    }
}

DocumentState& shown_state(Document& document) {
    return document.states[document.shown];
}

// The difference of two texts as one replacement.
TextEdit difference(const std::string& before, const std::string& after, const std::string& label) {
    const auto parted = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto same = static_cast<size_t>(parted.first - before.begin());
    size_t tail = 0;
    while (tail < std::min(before.size(), after.size()) - same &&
           before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    return {label, same, before.substr(same, before.size() - same - tail),
            after.substr(same, after.size() - same - tail)};
}

void record(DocumentState& state, const std::string& before, const std::string& label) {
    if (state.text == before) return;
    state.edits.resize(state.applied);
    state.edits.push_back(difference(before, state.text, label));
    state.applied = state.edits.size();
}

Result<Done> take_text(Document& document, const Result<std::string>& text, const std::string& label) {
    if (!text) return text.error();
    replace_text(document, *text, label);
    return Done{};
}

// The path to the named container in an array of containers and their nested containers.
std::optional<KeyPath> find_container(const toml::array* containers, const KeyPath& around, const std::string& key,
                                      const std::string& name) {
    if (containers == nullptr) return std::nullopt;
    for (size_t i = 0; i < containers->size(); ++i) {
        const toml::table* table = containers->get(i)->as_table();
        if (table == nullptr) continue;
        KeyPath path = around;
        path.push_back({key, static_cast<int>(i)});
        if ((*table)["name"].value<std::string>() == name) return path;
        if (auto nested = find_container((*table)["container"].as_array(), path, key, name)) return nested;
    }
    return std::nullopt;
}

const toml::node* node_at(const toml::table& root, const KeyPath& path) {
    const toml::node* node = &root;
    for (const KeyStep& step : path) {
        node = node->is_table() ? node->as_table()->get(step.key) : nullptr;
        if (node != nullptr && step.index >= 0) node = node->as_array()->get(static_cast<size_t>(step.index));
        if (node == nullptr) return nullptr;
    }
    return node;
}

// The path to the table with the scene's changes to a layer. name: "fire.embers" is the layer "embers" of the look that
// the container "fire" uses.
std::optional<KeyPath> find_layer(const toml::table& root, const std::string& name) {
    for (size_t point = name.find('.'); point != std::string::npos; point = name.find('.', point + 1)) {
        auto path = find_container(root["container"].as_array(), {}, "container", name.substr(0, point));
        if (!path || !node_at(root, *path)->as_table()->contains("look")) continue;
        path->push_back({"layers"});
        path->push_back({name.substr(point + 1)});
        return path;
    }
    return std::nullopt;
}

// Removes the number of a further texture: "smoke/2" becomes "smoke".
std::string without_number(const std::string& name) {
    const size_t slash = name.rfind('/');
    const bool is_number = slash != std::string::npos && slash + 1 < name.size() &&
                           name.find_first_not_of("0123456789", slash + 1) == std::string::npos;
    return is_number ? name.substr(0, slash) : name;
}

std::optional<KeyPath> find_path(const toml::table& root, DocumentKind kind, const std::string& container) {
    const std::string array = kind == DocumentKind::kLook ? "layer" : "container";
    for (const std::string& name : {container, without_number(container)}) {
        if (const auto path = find_container(root[array].as_array(), {}, array, name)) return path;
        if (const auto path = find_layer(root, name)) return path;
    }
    return std::nullopt;
}

std::optional<stage::ParameterValue> parameter_value(const toml::node& node) {
    if (const auto* flag = node.as_boolean()) return flag->get();
    if (const auto* whole = node.as_integer()) {
        const auto value = static_cast<int>(whole->get());
        if (value == whole->get()) return value;
        return static_cast<double>(whole->get());
    }
    if (const auto* number = node.as_floating_point()) return number->get();
    if (const auto* text = node.as_string()) return text->get();
    return std::nullopt;
}

KeyPath with_step(KeyPath path, const std::string& key) {
    path.push_back({key});
    return path;
}

Result<KeyPath> parameter_path(const Document& document, const std::string& container, const std::string& name) {
    const Result<KeyPath> path = container_path(document, container);
    if (!path) return path.error();
    return with_step(with_step(*path, "parameters"), name);
}

// Whether the file is one of the installed looks and scenes.
bool is_shipped(const std::filesystem::path& file) {
    std::error_code none;
    const std::filesystem::path shipped = stage::shipped_files_folder(), folder = file.parent_path();
    return std::filesystem::equivalent(folder, shipped / "scenes", none) ||
           std::filesystem::equivalent(folder, shipped / "looks", none);
}

// Whether another program changed the file. A removed file counts as unchanged, so that saving writes it again.
bool was_changed(const Document& document) {
    std::error_code none;
    return std::filesystem::exists(document.file, none) && stage::read_whole_file(document.file) != document.on_disk;
}

// Checks write permission first, since write_whole_file replaces the file by renaming, which would also replace a
// read-only file.
Result<Done> write_text(const std::filesystem::path& file, const std::string& text) {
    std::error_code none;
    if (std::filesystem::is_directory(file, none)) return Error{fmt::format("{}: is a folder", file.string())};
    if (std::filesystem::exists(file, none) && access(file.c_str(), W_OK) != 0)
        return Error{fmt::format("{}: is read-only: save under another name", file.string())};
    return stage::write_whole_file(file, text);
}

}  // namespace

Result<Document> open_document(const std::filesystem::path& file) {
    std::error_code code;
    if (!std::filesystem::is_regular_file(file, code))
        return Error{fmt::format("{}: there is no such file", file.string())};
    if (stage::file_ending(file) != ".toml")
        return Error{fmt::format("{}: is not a scene or a look: their names end in .toml", file.string())};
    if (!std::ifstream(file)) return Error{fmt::format("{}: cannot be read", file.string())};
    Document document;
    const std::filesystem::path whole = std::filesystem::absolute(file, code).lexically_normal();
    document.name = whole.filename().string();
    document.folder = whole.parent_path();
    const std::string text = stage::read_whole_file(file);
    for (DocumentState& state : document.states) state.text = text;
    if (!is_shipped(whole)) {
        document.file = whole;
        document.on_disk = text;
    }
    const std::optional<toml::table> root = parsed(text);
    if (root && root->contains("layer") && !root->contains("container")) document.kind = DocumentKind::kLook;
    return document;
}

Result<Document> new_scene_of_look(const std::string& look, const std::filesystem::path& folder) {
    const Result<std::filesystem::path> file = stage::find_look_file(look, folder);
    if (!file) return file.error();
    const Result<stage::LookDescription> description = stage::load_look_file(*file);
    if (!description) return description.error();
    Document document;
    document.name = file->filename().string();
    document.folder = folder;
    const Framing framing;
    const std::string text = fmt::format(
        "# {}\nframe_rate = {}\nlength = 10\nprewarm = {}\nbackground = \"#141b26\"\n\n[camera]\nposition = {}\n\n"
        "[[container]]\nname = {}\nlook = {}\n",
        description->purpose, description->rate, framing.prewarm, camera_text(framing),
        toml_text_of(file->stem().string()), toml_text_of(look));
    for (DocumentState& state : document.states) state.text = text;
    return document;
}

void frame_new_scene(Document& document, const Framing& framing) {
    for (const DocumentState& state : document.states)
        if (!state.edits.empty()) return;
    for (DocumentState& state : document.states) {
        const auto seen = with_value(state.text, {{"camera"}, {"position"}}, camera_text(framing));
        const auto warmed = seen ? with_value(*seen, {{"prewarm"}}, fmt::format("{}", framing.prewarm)) : seen;
        if (warmed) state.text = *warmed;
    }
}

const std::string& document_text(const Document& document) {
    return document.states[document.shown].text;
}

std::string scene_text(const Document& document) {
    std::string text = document_text(document);
    if (document.kind == DocumentKind::kScene || !parsed(text)) return text;
    const std::array<std::pair<const char*, const char*>, 3> names = {
        {{"layer", "container"}, {"rate", "frame_rate"}, {"purpose", "length"}}};
    for (const auto& [old_key, new_key] : names) {
        const Result<std::string> renamed = with_root_key(text, old_key, new_key);
        if (!renamed) return text;
        text = *renamed;
    }
    const Result<std::string> timed = with_value(text, {{"length"}}, kPreviewSeconds);
    return timed ? *timed : text;
}

std::filesystem::path scene_file(const Document& document) {
    return document.file.empty() ? document.folder / document.name : document.file;
}

std::string with_scene_named(const Document& document, std::string message) {
    if (!document.file.empty()) return message;
    const std::string file = scene_file(document).string(), name = "this scene";
    for (size_t at = message.find(file); at != std::string::npos; at = message.find(file, at + name.size()))
        message.replace(at, file.size(), name);
    return message;
}

Result<KeyPath> container_path(const Document& document, const std::string& container) {
    const std::optional<toml::table> root = parsed(document_text(document));
    if (!root) return Error{"the text is not TOML"};
    if (const auto path = find_path(*root, document.kind, container)) return *path;
    return Error{fmt::format("there is no container '{}'", container)};
}

std::map<std::string, stage::ParameterValue> written_parameters(const Document& document,
                                                                const std::string& container) {
    std::map<std::string, stage::ParameterValue> values;
    const std::optional<toml::table> root = parsed(document_text(document));
    const std::optional<KeyPath> path = root ? find_path(*root, document.kind, container) : std::nullopt;
    const toml::node* node = path ? node_at(*root, with_step(*path, "parameters")) : nullptr;
    if (node == nullptr || !node->is_table()) return values;
    for (const auto& [key, value] : *node->as_table()) {
        if (const auto parameter = parameter_value(value)) values[std::string(key.str())] = *parameter;
    }
    return values;
}

std::set<std::string> written_keys(const Document& document, const std::string& container) {
    std::set<std::string> keys;
    const std::optional<toml::table> root = parsed(document_text(document));
    const std::optional<KeyPath> path = root ? find_path(*root, document.kind, container) : std::nullopt;
    const toml::node* node = path ? node_at(*root, *path) : nullptr;
    if (node == nullptr || !node->is_table()) return keys;
    for (const auto& [key, value] : *node->as_table()) keys.emplace(key.str());
    return keys;
}

Result<Done> set_container_key(Document& document, const std::string& container, const std::string& key,
                               const std::string& value) {
    const Result<KeyPath> table = container_path(document, container);
    if (!table) return table.error();
    const KeyPath path = with_step(*table, key);
    const std::string& text = document_text(document);
    return take_text(document, value.empty() ? without_value(text, path) : with_value(text, path, value),
                     fmt::format("{}{} of {}", value.empty() ? "reset " : "", key, container));
}

Result<Done> set_parameter(Document& document, const std::string& container, const std::string& name,
                           const stage::ParameterValue& value, const std::string& label) {
    const Result<KeyPath> path = parameter_path(document, container, name);
    if (!path) return path.error();
    return take_text(document, with_value(document_text(document), *path, toml_text_of(value)),
                     label.empty() ? fmt::format("{} of {}", name, container) : label);
}

Result<Done> reset_parameter(Document& document, const std::string& container, const std::string& name,
                             const std::string& label) {
    const Result<KeyPath> path = parameter_path(document, container, name);
    if (!path) return path.error();
    return take_text(document, without_value(document_text(document), *path),
                     label.empty() ? fmt::format("reset {} of {}", name, container) : label);
}

Result<Done> reset_parameters(Document& document, const std::string& container) {
    const Result<KeyPath> path = container_path(document, container);
    if (!path) return path.error();
    Result<std::string> text = document_text(document);
    for (const auto& [name, value] : written_parameters(document, container)) {
        text = without_value(*text, with_step(with_step(*path, "parameters"), name));
        if (!text) return text.error();
    }
    return take_text(document, text, fmt::format("reset {}", container));
}

std::string written_value(const Document& document, const KeyPath& path) {
    return value_at(document_text(document), path);
}

Result<Done> set_key(Document& document, const KeyPath& path, const std::string& value) {
    return take_text(document, with_value(document_text(document), path, value), name_of(path));
}

Result<Done> remove_key(Document& document, const KeyPath& path) {
    return take_text(document, without_value(document_text(document), path), "reset " + name_of(path));
}

void begin_change(Document& document, const std::string& label) {
    end_change(document);
    document.change_label = label;
    document.change_before = document_text(document);
}

void end_change(Document& document) {
    if (document.change_label.empty()) return;
    record(shown_state(document), document.change_before, document.change_label);
    document.change_label.clear();
    document.change_before.clear();
}

void replace_text(Document& document, const std::string& text, const std::string& label) {
    DocumentState& state = shown_state(document);
    if (state.text == text) return;
    const std::string before = std::exchange(state.text, text);
    if (document.change_label.empty()) record(state, before, label);
    ++document.revision;
}

std::string undo_label(const Document& document) {
    const DocumentState& state = document.states[document.shown];
    return state.applied == 0 ? "" : state.edits[state.applied - 1].label;
}

std::string redo_label(const Document& document) {
    const DocumentState& state = document.states[document.shown];
    return state.applied == state.edits.size() ? "" : state.edits[state.applied].label;
}

void undo(Document& document) {
    end_change(document);
    DocumentState& state = shown_state(document);
    if (state.applied == 0) return;
    const TextEdit& edit = state.edits[--state.applied];
    state.text.replace(edit.offset, edit.inserted.size(), edit.removed);
    ++document.revision;
}

void redo(Document& document) {
    end_change(document);
    DocumentState& state = shown_state(document);
    if (state.applied == state.edits.size()) return;
    const TextEdit& edit = state.edits[state.applied++];
    state.text.replace(edit.offset, edit.removed.size(), edit.inserted);
    ++document.revision;
}

void show_state(Document& document, size_t state) {
    end_change(document);
    if (state == document.shown || state >= document.states.size()) return;
    document.shown = state;
    ++document.revision;
}

void copy_to_other_state(Document& document) {
    end_change(document);
    DocumentState& other = document.states[1 - document.shown];
    const std::string before = std::exchange(other.text, document_text(document));
    record(other, before, document.shown == 0 ? "copy of A" : "copy of B");
    ++document.revision;  // makes autosave write both states again
}

bool has_unsaved_changes(const Document& document) {
    return document.file.empty() || document_text(document) != document.on_disk;
}

Result<Done> save_document(Document& document, Overwrite overwrite) {
    end_change(document);
    if (document.file.empty()) return Error{"the scene has no file yet: save it under a name"};
    if (overwrite == Overwrite::kNo && was_changed(document))
        return Error{
            fmt::format("{}: another program has changed the file since it was opened: replace it, or save "
                        "under another name",
                        document.file.string())};
    Result<Done> written = write_text(document.file, document_text(document));
    if (written) document.on_disk = document_text(document);
    return written;
}

Result<Done> save_document_as(Document& document, const std::filesystem::path& file, Overwrite overwrite) {
    end_change(document);
    std::error_code code;
    const std::filesystem::path target = std::filesystem::absolute(file, code).lexically_normal();
    if (target == document.file) return save_document(document, overwrite);
    if (overwrite == Overwrite::kNo && std::filesystem::exists(target, code))
        return Error{fmt::format("{}: there is such a file already", target.string())};
    const std::string text = with_moved_files(document_text(document), document.folder, target.parent_path());
    if (Result<Done> written = write_text(target, text); !written) return written;
    for (DocumentState& state : document.states) {
        const std::string before =
            std::exchange(state.text, with_moved_files(state.text, document.folder, target.parent_path()));
        record(state, before, fmt::format("paths from {}", target.parent_path().string()));
    }
    document.file = target;
    document.folder = target.parent_path();
    document.on_disk = text;
    ++document.revision;
    return Done{};
}

}  // namespace tovu
