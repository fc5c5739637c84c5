// Progress of a render.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// "frame 30/100, 12.5 frames/s, 5.6 s left". Rate and time are left out before the first frame is done.
STAGE_EXPORT std::string progress_text(int frames_done, int frames_total, double elapsed_seconds);

enum class ProgressStyle {
    kLine,   // one line that is rewritten, at most ten times a second
    kPlain,  // a line about every second
    kJson,   // a line at most ten times a second, such as {"frame":30,"frames":100,"seconds":2.4,"seconds_left":5.6}
    kNone,
};

/// The style of the name "line", "plain", "json" or "none". Empty: kLine if `stream` is a terminal, else kPlain. Error:
/// any other name.
STAGE_EXPORT Result<ProgressStyle> progress_style(const std::string& name, std::FILE* stream);

/// Prints progress. The last frame is always printed.
class STAGE_EXPORT Progress {
  public:
    /// stream: not closed by the object.
    Progress(int frames_total, ProgressStyle style, std::FILE* stream);
    /// Ends the rewritten line with a newline.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(int frames_done);

  private:
    using Clock = std::chrono::steady_clock;
    int frames_total_;
    ProgressStyle style_;
    std::FILE* stream_;
    bool line_open_ = false;
    Clock::time_point start_;
    Clock::time_point last_shown_;
};

}  // namespace stage
