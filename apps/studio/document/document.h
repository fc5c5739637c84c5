// The document of the studio: the text of a scene or look file, its history, and a second state to compare with.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "stage/plugins/plugin.h"
#include "stage/result.h"
#include "toml_text.h"

namespace tovu {

enum class DocumentKind { kScene, kLook };

/// One change of a text, as the list of changes shows it.
struct TextEdit {
    std::string label;  // what changed: "birth_rate of smoke"
    size_t offset = 0;  // bytes
    std::string removed;
    std::string inserted;
};

/// A text and its changes. A document has two of them, A and B.
struct DocumentState {
    std::string text;
    std::vector<TextEdit> edits;  // oldest first
    size_t applied = 0;           // edits in effect; the later ones are undone
};

/// An open file or a new one. Edits change the shown state. Each TextEdit is one step of undo.
struct Document {
    DocumentKind kind = DocumentKind::kScene;
    std::filesystem::path file;    // empty: not saved yet
    std::string name;              // proposed file name before the first save: "steam.toml"
    std::filesystem::path folder;  // base of relative paths in the text
    std::string on_disk;           // the file's bytes when it was opened or saved
    std::array<DocumentState, 2> states;
    size_t shown = 0;           // 0: A, 1: B
    std::string change_label;   // of the open change; empty if no change is open
    std::string change_before;  // the text before the open change
    uint64_t revision = 0;      // grows with every change of the shown text
};

/// Opens a scene or look file. A file with `layer` tables is a look. A file with mistakes can be opened; they are
/// reported when its scene is read. An installed scene or look is opened as a new document with the same text. Error:
/// the file cannot be read, or its name does not end in ".toml".
stage::Result<Document> open_document(const std::filesystem::path& file);

/// The camera and pre-warming of a new scene.
struct Framing {
    // Position in world units. The camera looks along -Z with the default field of view.
    std::array<float, 3> camera = {0, 60, 300};
    double prewarm = 3;  // seconds
};

/// Makes an unsaved scene with one container at the origin that uses the look. look: name or path, as in a scene in
/// `folder`.
stage::Result<Document> new_scene_of_look(const std::string& look, const std::filesystem::path& folder);

/// Replaces the framing of a scene of new_scene_of_look, without a step of undo. Does nothing if the scene has edits.
void frame_new_scene(Document& document, const Framing& framing);

/// The text of the shown state.
const std::string& document_text(const Document& document);

/// The shown state as the text of a scene that can run. A look becomes a scene whose containers are its layers. Line
/// numbers stay the same.
std::string scene_text(const Document& document);

/// The file of the document, for relative paths and messages. Before the first save, the proposed name in the
/// document's folder.
std::filesystem::path scene_file(const Document& document);

/// Before the first save, replaces the name of scene_file in a message by "this scene".
std::string with_scene_named(const Document& document, std::string message);

/// The path to the table of a container, by the container's name in the built scene: "smoke"; "smoke/2", the container
/// of the second texture, with the same table; "fire.embers", a layer of a look, with the table of the scene's changes
/// to the layer, which may not exist; in a look, the layer's name. Error: unknown container.
stage::Result<KeyPath> container_path(const Document& document, const std::string& container);

/// The parameters that this text sets for the container, by registered name. Values from the file of the container's
/// look are left out. Parses the whole text: cache the result until the revision changes.
std::map<std::string, stage::ParameterValue> written_parameters(const Document& document, const std::string& container);

/// The keys of the container's table, such as "blend". Parses the whole text: cache the result until the revision
/// changes.
std::set<std::string> written_keys(const Document& document, const std::string& container);

/// Sets a key of the container's table, or removes it if `value`, TOML on one line, is empty. Errors as for
/// set_parameter.
stage::Result<stage::Done> set_container_key(Document& document, const std::string& container, const std::string& key,
                                             const std::string& value);

/// Sets a parameter. label: the step of undo, such as "Birth Rate of smoke"; if empty, made of both names. Error:
/// unknown container, or the text is not TOML; then nothing changes.
stage::Result<stage::Done> set_parameter(Document& document, const std::string& container, const std::string& name,
                                         const stage::ParameterValue& value, const std::string& label = "");

/// Removes a parameter from the text, so that its default or the look's value applies. label: as for set_parameter.
stage::Result<stage::Done> reset_parameter(Document& document, const std::string& container, const std::string& name,
                                           const std::string& label = "");

/// Removes all parameters that the text sets for the container, as one step of undo.
stage::Result<stage::Done> reset_parameters(Document& document, const std::string& container);

/// The TOML text of the value at a path ("[0, 0, 300]", "\"additive\""); empty if the value does not exist.
std::string written_value(const Document& document, const KeyPath& path);

/// Sets any key: of the scene ({{"length"}}), of the camera ({{"camera"}, {"position"}}) or of a container
/// (container_path and one more step). value: TOML on one line.
stage::Result<stage::Done> set_key(Document& document, const KeyPath& path, const std::string& value);
stage::Result<stage::Done> remove_key(Document& document, const KeyPath& path);

/// All edits between begin_change and end_change are one step of undo: a drag, or several values that belong together.
/// If the text is equal at the end, there is no step. begin_change ends a change that is still open.
void begin_change(Document& document, const std::string& label);
void end_change(Document& document);

/// Replaces the whole text, for text that was edited elsewhere.
void replace_text(Document& document, const std::string& text, const std::string& label);

/// The label of the step that undo or redo would change; empty if there is none.
std::string undo_label(const Document& document);
std::string redo_label(const Document& document);
/// Undoes or redoes one step, if there is one. Ends an open change first.
void undo(Document& document);
void redo(Document& document);

/// Shows state A (0) or B (1). Each has its own history. B begins as a copy of the text that was opened.
void show_state(Document& document, size_t state);
/// Copies the text of the shown state to the other state, as one step of undo there.
void copy_to_other_state(Document& document);

/// Whether the shown text differs from the file or was never saved.
bool has_unsaved_changes(const Document& document);

/// Whether saving may replace an existing file of another document, or a file that another program changed after it was
/// opened.
enum class Overwrite { kNo, kYes };

/// Writes the shown text to the document's file. On an error the file stays unchanged. A removed file is written again.
/// Error: the document has no file yet, the file cannot be written, or with kNo, another program changed the file.
stage::Result<stage::Done> save_document(Document& document, Overwrite overwrite = Overwrite::kNo);

/// Writes the shown text to another file, which becomes the document's file. Changes relative paths in the text so that
/// they name the same files from the new folder, as a step of undo. Errors as for save_document; with kNo, also an
/// existing file.
stage::Result<stage::Done> save_document_as(Document& document, const std::filesystem::path& file,
                                            Overwrite overwrite = Overwrite::kNo);

}  // namespace tovu
