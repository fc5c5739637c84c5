// Renders to a file in a process of its own: `tovu render` of the text that is shown. Plug-ins keep state for the whole
// process, so that a second scene cannot run beside the player's.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

struct ExportOrder {
    std::string scene_text;
    std::filesystem::path scene_file;  // that the text belongs to: relative paths start in its folder
    std::filesystem::path output;      // .png, .mp4 or what else `tovu render` writes
    std::optional<int64_t> frame;      // only this one, for a still; none: all
    std::string plugin;                // library for "smoke"; empty: the one that comes along
};

struct ExportState {
    int frames_done = 0;
    int frames_total = 0;  // 0 until the scene has been built
    double seconds_left = 0;
    bool ended = false;
    std::string error;                  // of an export that failed, a line for each mistake; else empty
    std::vector<std::string> warnings;  // lines
};

/// An export that runs. The destructor cancels it.
class ExportRun {
  public:
    static stage::Result<ExportRun> start(const ExportOrder& order);

    ExportRun(ExportRun&& other) noexcept;
    ExportRun& operator=(ExportRun&& other) noexcept;
    ~ExportRun();

    /// Takes what the process has told since the last call; never waits. Call once a frame.
    const ExportState& follow();
    /// Ends the process; no unfinished file is left. Returns when it has ended.
    void cancel();

  private:
    ExportRun() = default;
    void take_lines();
    void take_line(std::string line);
    void end(int status);

    pid_t pid_ = -1;
    int messages_ = -1;             // the process's standard error
    std::filesystem::path folder_;  // of the text as a file; temporary
    std::string scene_name_;        // in messages, instead of that file's
    std::string unread_;            // the beginning of a line
    std::vector<std::string> mistakes_;
    ExportState state_;
};

}  // namespace tovu
