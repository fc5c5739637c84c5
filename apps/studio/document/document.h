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
    std::vector<TextEdit> edits;  // oldest first; those from `applied` on were undone
    size_t applied = 0;
};

/// Edits go to the shown state; each with a label is one step of undo.
struct Document {
    DocumentKind kind = DocumentKind::kScene;
    std::filesystem::path file;    // empty: not saved yet
    std::string name;              // proposed for the file while there is none: "steam.toml"
    std::filesystem::path folder;  // where relative paths in the text start
    std::string on_disk;           // the file's bytes when it was opened or saved
    std::array<DocumentState, 2> states;
    size_t shown = 0;           // 0: A, 1: B
    std::string change_label;   // between begin_change and end_change; else empty
    std::string change_before;  // then: the text before it
    uint64_t revision = 0;      // grows with every change of the shown text
};

/// Opens a scene or look file; a file with `layer` at the top is a look. A file that is not right can be opened too:
/// its mistakes show when its scene is read. Of a file that comes along with the program a copy is opened, which has no
/// file yet. Error: it cannot be read, or its name does not end in ".toml".
stage::Result<Document> open_document(const std::filesystem::path& file);

/// What a new scene shows first.
struct Framing {
    std::array<float, 3> camera = {0, 60,
                                   300};  // position in world units; it looks along -Z, with the default field of view
    double prewarm = 3;                   // seconds
};

/// A scene that is not saved: one container at the origin that takes the look. look: as in a scene of `folder`.
stage::Result<Document> new_scene_of_look(const std::string& look, const std::filesystem::path& folder);

/// Gives a scene of new_scene_of_look another framing, which is no step of undo. A scene with edits stays as it is.
void frame_new_scene(Document& document, const Framing& framing);

/// The text of the shown state.
const std::string& document_text(const Document& document);

/// The shown state as the text of a scene, to be run: a look becomes a scene whose containers are the layers. Lines
/// keep their numbers.
std::string scene_text(const Document& document);

/// The file that scene_text belongs to, for relative paths and messages; before the first save its proposed name in its
/// folder.
std::filesystem::path scene_file(const Document& document);

/// A message with "this scene" for the file that scene_text belongs to, before the first save.
std::string with_scene_named(const Document& document, std::string message);

/// The path to a container's table by its name in the built scene: "smoke", "smoke/2" of several textures (the same
/// table), "fire.embers" of a look's layer (the scene's changes of it, which need not exist), the layer's name in a
/// look. Error: there is no such container.
stage::Result<KeyPath> container_path(const Document& document, const std::string& container);

/// The parameters that the text gives to the container itself, as written, by registered name; what a look's file
/// gives to a layer is not among them. Reads the whole text: keep the result until the revision changes.
std::map<std::string, stage::ParameterValue> written_parameters(const Document& document, const std::string& container);

/// The keys of the container's table, "blend" and so on. Keep the result as above.
std::set<std::string> written_keys(const Document& document, const std::string& container);

/// Sets a key of the container's table, or removes it if `value`, TOML on one line, is empty. Errors as for
/// set_parameter.
stage::Result<stage::Done> set_container_key(Document& document, const std::string& container, const std::string& key,
                                             const std::string& value);

/// Sets a parameter. label: of the step of undo, such as "Birth Rate of smoke"; empty: made of the names. Error: no
/// such container, or the text is not TOML; then nothing changes.
stage::Result<stage::Done> set_parameter(Document& document, const std::string& container, const std::string& name,
                                         const stage::ParameterValue& value, const std::string& label = "");

/// Removes a parameter from the text, so that its default holds, or the look's value. label as above.
stage::Result<stage::Done> reset_parameter(Document& document, const std::string& container, const std::string& name,
                                           const std::string& label = "");

/// The same for all that the text gives to the container, as one step of undo.
stage::Result<stage::Done> reset_parameters(Document& document, const std::string& container);

/// The value at a path as written ("[0, 0, 300]", "\"additive\""); empty when there is none.
std::string written_value(const Document& document, const KeyPath& path);

/// Sets any key: of the scene ({{"length"}}), the camera ({{"camera"}, {"position"}}), a container (container_path and
/// a step). value: TOML on one line.
stage::Result<stage::Done> set_key(Document& document, const KeyPath& path, const std::string& value);
stage::Result<stage::Done> remove_key(Document& document, const KeyPath& path);

/// Everything until end_change is one step of undo: a drag, or several values that belong together. Without a
/// difference it is none. A call while another change is open ends that one first.
void begin_change(Document& document, const std::string& label);
void end_change(Document& document);

/// Replaces the whole text by one that was edited elsewhere.
void replace_text(Document& document, const std::string& text, const std::string& label);

/// The label of the change that undo or redo would take; empty for none.
std::string undo_label(const Document& document);
std::string redo_label(const Document& document);
/// Both do nothing when there is none; an open change ends first.
void undo(Document& document);
void redo(Document& document);

/// Shows state A (0) or B (1). Each has its own history. B begins as a copy of the text that was opened.
void show_state(Document& document, size_t state);
/// Gives the other state the text of the shown one, as a change that the other can undo.
void copy_to_other_state(Document& document);

/// Whether the shown text differs from the file, or was never saved.
bool has_unsaved_changes(const Document& document);

/// What saving does with a file that exists: that of another document, or one that was changed since it was opened.
enum class Overwrite { kNo, kYes };

/// Writes the shown text to the document's file, whole or not at all; anew when it was removed. Error: it has no file
/// yet, it cannot be written, or another program changed it since it was opened (not with kYes).
stage::Result<stage::Done> save_document(Document& document, Overwrite overwrite = Overwrite::kNo);

/// Writes the shown text to another file, which becomes the document's. Relative paths in the text are changed so that
/// they name the same files from there, as a step of undo. Error as above; a file that exists is an error without kYes.
stage::Result<stage::Done> save_document_as(Document& document, const std::filesystem::path& file,
                                            Overwrite overwrite = Overwrite::kNo);

}  // namespace tovu
