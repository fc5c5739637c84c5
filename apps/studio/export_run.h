// Renders the shown text to a file by `tovu render` in a separate process. The player's process cannot run a second
// scene, since plug-ins have process-wide state.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

struct ExportOrder {
    std::string scene_text;
    std::filesystem::path scene_file;  // the file of the text; its folder is the base of relative paths
    std::filesystem::path output;      // .png, .mp4 or another format of `tovu render`
    std::string frames;                // "A-B", or "A" for a still; empty: all frames
    std::string plugin;                // library for "smoke"; empty: the installed library
};

struct ExportState {
    int frames_done = 0;
    int frames_total = 0;  // 0 until the scene has been built
    double seconds_left = 0;
    bool ended = false;
    std::string error;                  // a line for each mistake; empty unless the export failed
    std::vector<std::string> warnings;  // lines
};

/// A running export. The destructor cancels it.
class ExportRun {
  public:
    static stage::Result<ExportRun> start(const ExportOrder& order);

    ExportRun(ExportRun&& other) noexcept;
    ExportRun& operator=(ExportRun&& other) noexcept;
    ~ExportRun();

    /// Reads the messages of the process since the last call. Does not wait. Call it once a frame.
    const ExportState& follow();
    /// Ends the process and waits for its end. No unfinished file remains.
    void cancel();

  private:
    ExportRun() = default;
    void take_lines();
    void take_line(std::string line);
    void end(int status);

    pid_t pid_ = -1;
    int messages_ = -1;             // standard error of the process
    std::filesystem::path folder_;  // temporary folder with the text as a file
    std::string scene_name_;        // replaces the name of the temporary file in messages
    std::string unread_;            // the beginning of an incomplete line
    std::vector<std::string> mistakes_;
    ExportState state_;
};

}  // namespace tovu
