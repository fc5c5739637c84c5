// Commands from panels and keys to the studio. studio.cpp carries them out.
#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "document/autosave.h"
#include "document/document.h"
#include "document/save_look.h"
#include "player.h"

namespace tovu {

struct OpenScene {
    std::filesystem::path file;
};
struct NewFromLook {
    std::string look;  // its name
};
struct TakeRecovery {
    Recovery recovery;
};
struct DiscardRecovery {
    Recovery recovery;
};
struct ShowGallery {};

struct SelectContainer {
    std::string container;
};
struct ShowParameter {  // selects the container, scrolls to the parameter and marks it
    std::string container;
    std::string parameter;
};
struct SetParameter {
    std::string container;
    std::string parameter;
    stage::ParameterValue value;
    std::string label;  // names the step of undo
};
struct ResetParameter {
    std::string container;
    std::string parameter;
    std::string label;  // names the step of undo
};
struct ResetParameters {
    std::string container;
};
struct SetContainerKey {
    std::string container;
    std::string key;    // in the container's table: "blend"
    std::string value;  // TOML on one line; empty: remove the key
};
struct PressButton {  // presses a button of a plug-in in the shown run
    std::string container;
    std::string button;
};
struct SetKeys {  // sets keys of the scene as one step of undo
    std::string label;
    std::vector<std::pair<KeyPath, std::string>> values;  // TOML on one line; empty: remove the key
};
struct BeginChange {  // all edits until EndChange are one step of undo
    std::string label;
};
struct EndChange {};

struct Undo {};
struct Redo {};
struct ShowState {
    size_t state;  // 0: A, 1: B
};
struct CopyToOtherState {};
struct Save {
    bool overwrite = false;
};
struct SaveAs {
    std::filesystem::path file;
    bool overwrite = false;
};
struct SaveLook {
    LookToSave look;
};
struct StartExport {  // exports the state that is shown; cancels a running export
    std::filesystem::path output;
    std::string frames;  // "A-B", or "A" for a still; empty: all frames
};
struct CancelExport {};

struct SetPlaying {
    bool playing;
};
struct Seek {
    int64_t frame;
};
struct CancelSeek {};
struct SetSpeed {
    double speed;
};
struct SetLoop {
    bool loop;
    FrameRange range;
};
struct SetView {
    ViewOrders view;
};
struct SetFullscreen {
    bool fullscreen;
};
struct SetTextSize {
    float factor;  // 0.5 to 3
};
struct Quit {};

using Command =
    std::variant<OpenScene, NewFromLook, TakeRecovery, DiscardRecovery, ShowGallery, SelectContainer, ShowParameter,
                 SetParameter, ResetParameter, ResetParameters, SetContainerKey, PressButton, SetKeys, BeginChange,
                 EndChange, Undo, Redo, ShowState, CopyToOtherState, Save, SaveAs, SaveLook, StartExport, CancelExport,
                 SetPlaying, Seek, CancelSeek, SetSpeed, SetLoop, SetView, SetFullscreen, SetTextSize, Quit>;
using Commands = std::vector<Command>;

}  // namespace tovu
