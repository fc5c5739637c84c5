#include "replay_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "plugin_location.h"
#include "stage/replay/replay.h"
#include "stage/scenefile/plugin_file.h"

namespace tovu {

namespace {

std::string report_text(const std::string& file, const stage::ReplayReport& report) {
    if (!report.difference)
        return fmt::format("{}: {} frames with {} calls, no difference\n", file, report.frames, report.calls);
    const stage::Difference& difference = *report.difference;
    return fmt::format("{}:{}: the first difference, in {}\n  recorded: {}\n  now:      {}\n", file, difference.line,
                       difference.where, difference.recorded, difference.now);
}

}  // namespace

stage::Result<ReplayOutcome> replay_file(const ReplayOptions& options) {
    const stage::Result<stage::CallFile> calls = stage::read_call_file(options.calls);
    if (!calls) return calls.error();
    const std::string smoke = smoke_plugin_file();
    const std::vector<std::string> names = stage::recorded_plugins(*calls);
    const std::string smoke_name = std::filesystem::path(smoke).stem().string();
    const bool has_smoke = std::find(names.begin(), names.end(), smoke_name) != names.end();
    const std::string replaced = has_smoke || names.empty() ? smoke_name : names.front();
    const auto find = [&](const std::string& name) {
        if (name == replaced && !options.plugin.empty()) return stage::Result<std::string>(options.plugin);
        return stage::find_plugin_file(name, smoke, {});
    };
    const stage::Result<stage::ReplayReport> report = stage::replay_calls(*calls, find);
    if (!report) return report.error();
    return ReplayOutcome{!report->difference, report_text(options.calls, *report)};
}

}  // namespace tovu
