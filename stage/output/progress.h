// Progress of a render.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include "stage/stage_export.h"

namespace stage {

/// "frame 30/100, 12.5 frames/s, 5.6 s left"; rate and time are left out while no frame is done or no time has passed.
STAGE_EXPORT std::string progress_text(int frames_done, int frames_total, double elapsed_seconds);

/// Prints progress: on a terminal one line that is rewritten (at most ten times a second), otherwise a line about every
/// second. The last frame is always printed.
class STAGE_EXPORT ProgressLine {
  public:
    /// stream: is not closed here; isatty decides whether it is a terminal.
    ProgressLine(int frames_total, std::FILE* stream);
    /// Ends the rewritten line with a newline.
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(int frames_done);

  private:
    using Clock = std::chrono::steady_clock;
    int frames_total_;
    std::FILE* stream_;
    bool terminal_;
    bool line_open_ = false;
    Clock::time_point start_;
    Clock::time_point last_shown_;
};

}  // namespace stage
