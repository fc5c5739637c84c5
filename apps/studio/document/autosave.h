// Copies of unsaved documents in a folder of the user, for recovery after a crash.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "document.h"

namespace tovu {

/// $XDG_STATE_HOME/tovu, or ~/.local/state/tovu. Does not create it.
std::filesystem::path state_folder();

/// The place for the copy of one document. Its lock file stays locked while the process runs.
struct Autosave {
    std::filesystem::path file;  // empty: no copy is written
    int lock = -1;               // file descriptor
    uint64_t revision = 0;       // of the document at the last write or removal
    bool is_written = false;     // the copy exists
};

/// Locks a free place in `folder`. Creates the folder if necessary. Error: the folder cannot be written to.
stage::Result<Autosave> begin_autosave(const std::filesystem::path& folder);

/// Writes the document's file name and both texts if they changed since the last call and no change is open. Removes
/// the copy if the document has no unsaved changes. Returns early if there is nothing to do: call it once a frame.
stage::Result<stage::Done> autosave(Autosave& place, const Document& document);

/// Removes the copy and releases the place. Call it before the program ends normally and when a document without
/// unsaved changes is closed.
void end_autosave(Autosave& place);

/// Releases the place and keeps the copy, so that find_recoveries finds it.
void leave_autosave(Autosave& place);

/// A copy of a document that was not saved, because of a crash or because it was closed without saving.
struct Recovery {
    std::filesystem::path copy;      // file in the folder of copies
    std::filesystem::path original;  // the document's file; empty if it was never saved
    std::string name;                // for display: the file, or the proposed name of a document that was never saved
    std::filesystem::file_time_type time;
};

/// The copies that no running process has locked, newest first.
std::vector<Recovery> find_recoveries(const std::filesystem::path& folder);

/// Reads the document from the copy, without its history. The copy stays until discard_recovery. Error: the copy cannot
/// be read.
stage::Result<Document> recover(const Recovery& recovery);

/// Removes the copy.
void discard_recovery(const Recovery& recovery);

}  // namespace tovu
