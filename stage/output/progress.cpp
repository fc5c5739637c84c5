#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cmath>

namespace stage {
namespace {

constexpr double kTerminalPauseSeconds = 0.1;
constexpr double kPlainPauseSeconds = 1.0;

std::string time_text(double seconds) {
    if (seconds < 60) return fmt::format("{:.1f} s", seconds);
    const int whole = static_cast<int>(std::lround(seconds));
    if (whole < 3600) return fmt::format("{}:{:02} min", whole / 60, whole % 60);
    return fmt::format("{}:{:02}:{:02} h", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace

std::string progress_text(int frames_done, int frames_total, double elapsed_seconds) {
    std::string text = fmt::format("frame {}/{}", frames_done, frames_total);
    if (frames_done < 1 || !(elapsed_seconds > 0)) return text;
    const double rate = frames_done / elapsed_seconds;
    text += fmt::format(", {:.1f} frames/s", rate);
    text += frames_done < frames_total ? fmt::format(", {} left", time_text((frames_total - frames_done) / rate))
                                       : fmt::format(", took {}", time_text(elapsed_seconds));
    return text;
}

ProgressLine::ProgressLine(int frames_total, std::FILE* stream)
    : frames_total_(frames_total),
      stream_(stream),
      terminal_(isatty(fileno(stream)) == 1),
      start_(Clock::now()),
      last_shown_(start_) {}

ProgressLine::~ProgressLine() {
    if (line_open_) std::fputc('\n', stream_);
}

void ProgressLine::show(int frames_done) {
    using Seconds = std::chrono::duration<double>;
    const Clock::time_point now = Clock::now();
    const double pause = terminal_ ? kTerminalPauseSeconds : kPlainPauseSeconds;
    if (frames_done < frames_total_ && Seconds(now - last_shown_).count() < pause) return;
    last_shown_ = now;
    const std::string text = progress_text(frames_done, frames_total_, Seconds(now - start_).count());
    // \033[K clears the rest of the previous line, which can be longer.
    const std::string line = terminal_ ? '\r' + text + "\033[K" : text + '\n';
    std::fputs(line.c_str(), stream_);
    std::fflush(stream_);
    line_open_ = terminal_;
}

}  // namespace stage
