#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cmath>

namespace stage {
namespace {

constexpr double kPauseSeconds = 0.1;
constexpr double kPlainPauseSeconds = 1.0;

std::string time_text(double seconds) {
    if (seconds < 60) return fmt::format("{:.1f} s", seconds);
    const int whole = static_cast<int>(std::lround(seconds));
    if (whole < 3600) return fmt::format("{}:{:02} min", whole / 60, whole % 60);
    return fmt::format("{}:{:02}:{:02} h", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string json_line(int frames_done, int frames_total, double elapsed_seconds) {
    std::string text =
        fmt::format(R"({{"frame":{},"frames":{},"seconds":{:.3f})", frames_done, frames_total, elapsed_seconds);
    if (frames_done > 0)
        text += fmt::format(R"(,"seconds_left":{:.3f})", elapsed_seconds * (frames_total - frames_done) / frames_done);
    return text + "}\n";
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

Result<ProgressStyle> progress_style(const std::string& name, std::FILE* stream) {
    if (name.empty()) return isatty(fileno(stream)) == 1 ? ProgressStyle::kLine : ProgressStyle::kPlain;
    if (name == "line") return ProgressStyle::kLine;
    if (name == "plain") return ProgressStyle::kPlain;
    if (name == "json") return ProgressStyle::kJson;
    if (name == "none") return ProgressStyle::kNone;
    return Error{fmt::format("--progress {}: must be line, plain, json or none", name)};
}

Progress::Progress(int frames_total, ProgressStyle style, std::FILE* stream)
    : frames_total_(frames_total), style_(style), stream_(stream), start_(Clock::now()), last_shown_(start_) {}

Progress::~Progress() {
    if (line_open_) std::fputc('\n', stream_);
}

void Progress::show(int frames_done) {
    using Seconds = std::chrono::duration<double>;
    if (style_ == ProgressStyle::kNone) return;
    const Clock::time_point now = Clock::now();
    const double pause = style_ == ProgressStyle::kPlain ? kPlainPauseSeconds : kPauseSeconds;
    if (frames_done < frames_total_ && Seconds(now - last_shown_).count() < pause) return;
    last_shown_ = now;
    const double elapsed = Seconds(now - start_).count();
    const std::string text = progress_text(frames_done, frames_total_, elapsed);
    // \033[K clears the rest of the previous line, which can be longer.
    const std::string line = style_ == ProgressStyle::kJson   ? json_line(frames_done, frames_total_, elapsed)
                             : style_ == ProgressStyle::kLine ? '\r' + text + "\033[K"
                                                              : text + '\n';
    std::fputs(line.c_str(), stream_);
    std::fflush(stream_);
    line_open_ = style_ == ProgressStyle::kLine;
}

}  // namespace stage
