#include "trace_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>
#include <vector>

#include "option_values.h"
#include "render_times.h"
#include "stage/output/trace_file.h"
#include "stage/replay/digest.h"
#include "stage/scenefile/scene_draw.h"
#include "stage/scenefile/scene_reader.h"
#include "stage/scenefile/scene_run.h"

namespace tovu {

namespace {

using stage::Done;
using stage::Result;

constexpr double kMillisecondsPerSecond = 1e3;

// A row of the table, with a value for each frame.
struct TraceRow {
    std::string what;
    std::string container;
    std::vector<double> values;
};

// Adds `value` to the value of frame `index`. Appends a new row on its first use.
void add(std::vector<TraceRow>& rows, std::string_view what, std::string_view container, size_t index, double value) {
    auto row = std::ranges::find_if(
        rows, [&](const TraceRow& known) { return known.what == what && known.container == container; });
    if (row == rows.end()) row = rows.insert(rows.end(), {std::string(what), std::string(container), {}});
    row->values.resize(index + 1);
    row->values[index] += value;
}

// Percentile by nearest rank. percent: above 0, up to 100.
double percentile(const std::vector<double>& sorted, double percent) {
    const double rank = std::ceil(percent / 100 * static_cast<double>(sorted.size()));
    return sorted[static_cast<size_t>(rank) - 1];
}

std::string row_text(const TraceRow& row, int first_frame, int decimals) {
    std::vector<double> sorted = row.values;
    std::ranges::sort(sorted);
    std::string text = fmt::format("{:<30} {:<24}", row.what, row.container);
    for (const double percent : {50.0, 95.0, 99.0, 100.0})
        text += fmt::format("{:>10.{}f}", percentile(sorted, percent), decimals);
    return text + fmt::format("{:>8}\n", first_frame + std::ranges::max_element(row.values) - row.values.begin());
}

std::string section_text(const char* unit, std::vector<TraceRow>& rows, const FrameRange& range, int decimals) {
    std::string text =
        fmt::format("{:<55}{:>10}{:>10}{:>10}{:>10}{:>8}\n", unit, "median", "95 %", "99 %", "worst", "frame");
    for (TraceRow& row : rows) {
        row.values.resize(static_cast<size_t>(frame_count(range)));  // adds zeros for the last frames
        text += row_text(row, range.first, decimals);
    }
    return text;
}

// Labels of entry points, in the order of the table.
constexpr std::pair<const char*, const char*> kEntryPoints[] = {{"PLUGIN_NEW_GEOM", "step"},
                                                                {"PLUGIN_RENDER_OPENGL", "pass"}};

std::string label(std::string_view event) {
    for (const auto& [name, word] : kEntryPoints)
        if (event == name) return word;
    return event.starts_with("PLUGIN_") ? std::string(event) : fmt::format("section {}", event);
}

size_t rank(const TraceRow& row) {
    if (row.container.empty()) return 0;
    for (size_t i = 0; i < std::size(kEntryPoints); ++i)
        if (row.what == kEntryPoints[i].second) return i + 1;
    return std::size(kEntryPoints) + 1;
}

// Services may be called from any thread of a plug-in.
std::atomic<int64_t> the_service_calls;

const stage::CallWatch kCountServices = {.service_begins = [](stage::ServiceCall&) {
    the_service_calls.fetch_add(1, std::memory_order_relaxed);
    return true;
}};

struct WatchServices {
    WatchServices() { stage::watch_calls(&kCountServices); }
    WatchServices(const WatchServices&) = delete;
    WatchServices& operator=(const WatchServices&) = delete;
    ~WatchServices() { stage::watch_calls(nullptr); }
};

struct Rows {
    std::vector<TraceRow> times;
    std::vector<TraceRow> counts;
};

// Runs and draws a frame. index: position of its values in the rows.
Result<Done> trace_frame(stage::SceneRun& run, stage::SceneCanvas& canvas, const stage::FieldTables& tables, int frame,
                         size_t index, Rows& rows) {
    const stage::Stage& host = *run.built.stage;
    double simulate = 0;
    double draw = 0;
    the_service_calls = 0;
    if (Result<Done> done = timed(simulate, [&] { return stage::run_until(run, frame); }); !done) return done;
    if (Result<Done> done = timed(draw, [&] { return stage::draw_frame(canvas, run.built); }); !done) return done;
    add(rows.times, "simulate the frame", "", index, simulate * kMillisecondsPerSecond);
    add(rows.times, "draw the frame", "", index, draw * kMillisecondsPerSecond);
    add(rows.counts, "host calls", "", index, static_cast<double>(the_service_calls));
    for (const int32_t handle : stage::containers_in_tree_order(host)) {
        const stage::Instance* instance = stage::instance_of(host, handle);
        if (instance == nullptr || tables.at(instance->plugin).record.empty()) continue;
        const int64_t particles = stage::live_records(*instance, tables.at(instance->plugin));
        add(rows.counts, "particles", stage::find_container(host, handle)->name, index, static_cast<double>(particles));
    }
    return Done{};
}

}  // namespace

Result<std::string> trace_scene(const TraceOptions& options) {
    const Result<stage::SceneDescription> scene = stage::load_scene_file(options.scene);
    if (!scene) return scene.error();
    const Result<FrameRange> range = parse_frames(options.frames, *scene);
    if (!range) return range.error();
    if (!options.json.empty())
        if (const Result<Done> checked = check_output("--json", options.json, *scene); !checked) return checked.error();
    Result<stage::BuiltScene> built = stage::build_scene(*scene, options.plugin);
    if (!built) return built.error();
    const Result<stage::FieldTables> tables = stage::read_field_tables();
    if (!tables) return tables.error();
    std::vector<stage::TraceSection> sections;  // outlives the run, whose sink appends to it
    Rows rows;
    size_t index = 0;
    stage::SceneRun run = stage::start_run(std::move(*built));
    Result<stage::SceneCanvas> canvas = stage::make_canvas(*scene);
    if (!canvas) return canvas.error();
    if (const Result<Done> done = stage::run_until(run, range->first - 1); !done) return done.error();
    run.built.stage->profile.sink = [&](const stage::TraceSpan& span) {
        if (!options.json.empty()) sections.push_back(stage::trace_section(span));
        add(rows.times, label(span.event), span.container, index, span.duration_seconds * kMillisecondsPerSecond);
    };
    const WatchServices watch;
    for (int frame = range->first; frame <= range->last; ++frame, ++index)
        if (const Result<Done> done = trace_frame(run, *canvas, *tables, frame, index, rows); !done)
            return done.error();
    run.built.stage->profile.sink = nullptr;  // ignores the clean-up
    if (!options.json.empty())
        if (const Result<Done> written = stage::write_trace(options.json, sections); !written) return written.error();
    std::ranges::stable_sort(rows.times, {}, rank);
    return fmt::format("{}: frames {} to {}, {} x {} pixels, {}\n\n", options.scene, range->first, range->last,
                       scene->size[0], scene->size[1], canvas->context.description().renderer) +
           section_text("milliseconds a frame", rows.times, *range, 3) + "\n" +
           section_text("count a frame", rows.counts, *range, 0);
}

}  // namespace tovu
