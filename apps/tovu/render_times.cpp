#include "render_times.h"

#include <fmt/format.h>

#include <algorithm>

namespace tovu {

std::string times_text(const RenderTimes& times) {
    const double total = times.simulate + times.draw + times.read + times.wait;
    const auto row = [&](const char* name, double seconds) {
        return fmt::format("{:<22}{:9.2f}{:11.2f}{:7.0f} %\n", name, seconds, 1e3 * seconds / std::max(times.frames, 1),
                           total > 0 ? 100 * seconds / total : 0.0);
    };
    return fmt::format("{:<22}{:>9}{:>11}{:>9}\n", "", "seconds", "ms/frame", "share") +
           row("simulate", times.simulate) + row("draw", times.draw) + row("read back", times.read) +
           row("wait for the writer", times.wait) + row("together", total) + row("meanwhile: write", times.write);
}

}  // namespace tovu
