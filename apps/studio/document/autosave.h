// Documents that survive a crash: their states as files in a folder of the user, while the studio runs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "document.h"

namespace tovu {

/// $XDG_STATE_HOME/tovu, or ~/.local/state/tovu. Does not create it.
std::filesystem::path state_folder();

/// The place of one document's copy. Its lock file is held while the process lives; a crash releases it.
struct Autosave {
    std::filesystem::path file;  // empty: nothing is kept
    int lock = -1;               // file descriptor
    uint64_t revision = 0;       // of the document when it was written last
    bool is_written = false;
};

/// Takes a free place in `folder`, which is created.
stage::Result<Autosave> begin_autosave(const std::filesystem::path& folder);

/// Writes the document's file name and both texts, whole, when they changed since the last call and no change is open;
/// removes the copy when nothing is unsaved. Cheap otherwise: call it once a frame.
stage::Result<stage::Done> autosave(Autosave& place, const Document& document);

/// Removes the copy and releases the place: call before the program ends in peace, and when a document without unsaved
/// work is closed.
void end_autosave(Autosave& place);

/// Leaves the copy to be found by find_recoveries, and releases the place.
void leave_autosave(Autosave& place);

/// What a crash left, or a document that was left without saving.
struct Recovery {
    std::filesystem::path copy;      // in the folder
    std::filesystem::path original;  // the document's own file, empty when it was never saved
    std::string name;                // for people: the file, or the name of one that was never saved
    std::filesystem::file_time_type time;
};

/// Copies that no living process holds, newest first.
std::vector<Recovery> find_recoveries(const std::filesystem::path& folder);

/// The document as it was, without its history. The copy stays until discard_recovery. Error: it cannot be read.
stage::Result<Document> recover(const Recovery& recovery);

void discard_recovery(const Recovery& recovery);

}  // namespace tovu
