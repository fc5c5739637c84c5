// The command line. Only this file, and fault_guard.h after faults of plug-ins and signals, print and choose the exit
// status: 0 for success, 1 for a difference, a failed check or a surprise, 2 for an error.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <nlohmann/json.hpp>

#include "bake_command.h"
#include "commit.h"
#include "docs_command.h"
#include "farm_command.h"
#include "fault_guard.h"
#include "hash_command.h"
#include "lint_command.h"
#include "looks_command.h"
#include "params_command.h"
#include "plugin_location.h"
#include "record_command.h"
#include "render_command.h"
#include "replay_command.h"
#include "stage/names.h"
#include "stage/output/progress.h"
#include "trace_command.h"
#include "validate_command.h"

namespace {

constexpr int kDifference = 1;  // also for a failed check or a surprise
constexpr int kMistake = 2;

// Prints each line of the message with the prefix "tovu: ".
int fail(const std::string& message) {
    size_t start = 0;
    while (start <= message.size()) {
        const size_t end = std::min(message.find('\n', start), message.size());
        std::fprintf(stderr, "tovu: %s\n", message.substr(start, end - start).c_str());
        start = end + 1;
    }
    return kMistake;
}

void print_warning(const std::string& message) {
    std::fprintf(stderr, "warning: %s\n", message.c_str());
}

// Prints a line such as {"warning":"no light"}.
void print_json(const char* kind, const std::string& message) {
    const nlohmann::json json = {{kind, message}};
    std::fprintf(stderr, "%s\n", json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

int run_params(const tovu::ParamsOptions& options) {
    const stage::Result<std::string> text = tovu::params_text(options);
    if (!text) return fail(text.error().message);
    std::fputs(text->c_str(), stdout);
    return 0;
}

int run_hash(const tovu::HashOptions& options) {
    const stage::Result<stage::Done> done = tovu::hash_scenes(options, [](const std::string& line) {
        std::puts(line.c_str());
        std::fflush(stdout);
    });
    return done ? 0 : fail(done.error().message);
}

// What a render prints.
struct RenderMessages {
    std::string progress;  // name of a progress style
    bool report = false;
};

int run_render(const tovu::RenderOptions& options, const RenderMessages& messages) {
    std::signal(SIGCHLD, SIG_DFL);  // while it is ignored, the exit status of ffmpeg is lost
    const stage::Result<stage::ProgressStyle> style = stage::progress_style(messages.progress, stderr);
    if (!style) return fail(style.error().message);
    const bool as_json = *style == stage::ProgressStyle::kJson;
    const auto warn = [as_json](const std::string& message) {
        as_json ? print_json("warning", message) : print_warning(message);
    };
    std::unique_ptr<stage::Progress> shown;
    const auto progress = [&shown, &style](int done, int total) {
        if (!shown) shown = std::make_unique<stage::Progress>(total, *style, stderr);
        shown->show(done);
    };
    const stage::Result<tovu::RenderReport> report = tovu::render_scene(options, progress, warn);
    shown.reset();
    if (!report && as_json) {
        print_json("error", report.error().message);
        return kMistake;
    }
    if (!report) return fail(report.error().message);
    for (const std::string& complaint : report->complaints) warn(complaint);
    for (const std::string& written : report->written) std::printf("%s\n", written.c_str());
    if (messages.report) std::fputs(tovu::times_text(report->times).c_str(), stdout);
    return 0;
}

int run_record(const tovu::RecordOptions& options) {
    const stage::Result<int> frames = tovu::record_scene(options);
    if (!frames) return fail(frames.error().message);
    std::printf("%s: %d frame%s\n", options.output.c_str(), *frames, *frames == 1 ? "" : "s");
    return 0;
}

int run_replay(const tovu::ReplayOptions& options) {
    const stage::Result<tovu::ReplayOutcome> outcome = tovu::replay_file(options);
    if (!outcome) return fail(outcome.error().message);
    std::fputs(outcome->text.c_str(), stdout);
    return outcome->is_equal ? 0 : kDifference;
}

int run_validate(const tovu::ValidateOptions& options) {
    const stage::Result<int> status = tovu::validate_plugin(options, [](const std::string& text) {
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    });
    return status ? *status : fail(status.error().message);
}

void add_hash(CLI::App& app, tovu::HashOptions& options) {
    CLI::App* command = app.add_subcommand("hash", "Print digests of a scene's frames, without drawing");
    command->add_option("scene", options.scenes, "Scene files")->required();
    command->add_option("--every", options.every, "Only every Nth frame, from frame 0 on; default 1");
    command->add_option("--frames", options.frames, "A-B or A: only these frames, counted from 0");
    command->add_option("--plugin", options.plugin, "Plug-in library that replaces the smoke");
}

// The script prints its own help.
void add_bake(CLI::App& app) {
    app.add_subcommand("bake", "Make wind images, or a title that erodes into smoke")
        ->prefix_command()
        ->set_help_flag();
}

int run_docs(const tovu::DocsOptions& options) {
    const auto print = [](const std::string& line) { std::printf("%s\n", line.c_str()); };
    const stage::Result<stage::Done> made = tovu::make_docs(options, print);
    return made ? 0 : fail(made.error().message);
}

void add_docs(CLI::App& app, tovu::DocsOptions& options) {
    CLI::App* command = app.add_subcommand("docs", "Make the reference of the smoke's parameters");
    command->add_option("folder", options.folder, "The folder of parameters.md")->required();
    command->add_flag("--changed", options.changed, "Draw only the pictures whose sources changed");
    command->add_flag("--check", options.check, "Write nothing; fail when something is not up to date");
}

int run_looks(const CLI::App& command, const tovu::LooksOptions& options) {
    const auto print = [](const std::string& line) { std::printf("%s\n", line.c_str()); };
    const stage::Result<stage::Done> done =
        command.got_subcommand("save")     ? tovu::save_look(options, print, print_warning)
        : command.got_subcommand("diff")   ? tovu::diff_looks(options, print)
        : command.got_subcommand("retime") ? tovu::retime_look_file(options, print, print_warning)
                                           : tovu::list_looks(print);
    return done ? 0 : fail(done.error().message);
}

void add_looks(CLI::App& app, tovu::LooksOptions& options) {
    CLI::App* command = app.add_subcommand("looks", "List the looks that scenes can take");
    command->require_subcommand(0, 1);
    CLI::App* save = command->add_subcommand("save", "Make a look of a scene's container");
    save->add_option("scene", options.scene, "Scene file")->required();
    save->add_option("container", options.container, "Its name")->required();
    save->add_option("-o,--output", options.output, "The file; looks/CONTAINER.toml beside the scene when left out");
    CLI::App* diff = command->add_subcommand("diff", "Show the differences between two looks");
    diff->add_option("first", options.first, "Name or file")->required();
    diff->add_option("second", options.second, "Name or file")->required();
    CLI::App* retime = command->add_subcommand("retime", "Convert a look to another frame rate");
    retime->add_option("look", options.look, "Name or file")->required();
    retime->add_option("rate", options.rate, "Frames per second, such as 25, 29.97 or 60")->required();
    retime->add_option("-o,--output", options.output, "The file; printed when left out");
}

int run_lint(const tovu::LintOptions& options) {
    const stage::Result<std::vector<std::string>> lines = tovu::lint_file(options);
    if (!lines) return fail(lines.error().message);
    for (const std::string& line : *lines) std::printf("%s\n", line.c_str());
    return lines->empty() ? 0 : kDifference;
}

void add_lint(CLI::App& app, tovu::LintOptions& options) {
    CLI::App* command = app.add_subcommand("lint", "Explain settings with surprising results in a scene or a look");
    command->add_option("scene", options.scene, "Scene file, look file or name of a look")->required();
    command->add_option("--plugin", options.plugin, "Plug-in library that replaces the smoke");
}

void add_params(CLI::App& app, tovu::ParamsOptions& options) {
    CLI::App* command = app.add_subcommand("params", "Show a plug-in's parameters");
    command->add_option(
        "plugin", options.plugin,
        "As in a scene: \"smoke\" (the default), a library beside it such as TovuGather, or a file; or a "
        "parameter of the smoke");
    command->add_option("parameter", options.parameter, "Only this parameter, with all that is known of it");
    command->add_flag("--json", options.json, "JSON instead of a table");
}

void add_render(CLI::App& app, tovu::RenderOptions& options, RenderMessages& messages) {
    CLI::App* command = app.add_subcommand("render", "Render a scene file");
    command->add_option("scene", options.scene, "Scene file")->required();
    command
        ->add_option("-o,--output", options.outputs,
                     "x.png, x.exr, frames/%04d.png, x.mp4, x.mov, x.webm, x.webp or x.gif; may be given several times")
        ->required()
        ->allow_extra_args(false);
    command->add_option("--key", options.key, "Video of the alpha; -o is then its fill. Both are .mp4 or .mov");
    command->add_option("--alpha", options.alpha, "straight or premultiplied, for .mov files and fills");
    command->add_option("--bits", options.bits, "Per channel of .png files: 8 if not given, or 16");
    command->add_option("--sheet", options.sheet, "COLUMNSxROWS: single pictures show that many frames, small");
    command->add_option("--interlace", options.interlace,
                        "top or bottom: two pictures of 50 or 59.94 a second become one frame, this field first");
    command->add_option("--codec", options.codec, "Of .mp4 files: h264 if not given, or h265");
    command->add_option("--at", options.at, "Time of a single picture, seconds");
    command->add_option("--frames", options.frames, "A-B or A: only these frames, counted from 0");
    command->add_option("--chunk", options.chunk, "K/N: only the K-th of N parts of the frames, for numbered pictures");
    command->add_option("--from", options.from,
                        "Take the frames from numbered pictures that render made with --bits 16");
    command->add_flag("--resume", options.resume,
                      "Keep numbered pictures of an earlier render, and render the missing ones");
    command->add_option("--size", options.size, "WIDTHxHEIGHT in pixels, instead of the scene's");
    command->add_option("--seed", options.seed, "Random seed, instead of the scene's");
    command->add_option("--rate", options.rate,
                        "Frames per second, such as 25, 29.97 or 60; the scene's smoke is converted to it");
    command->add_option("--set", options.settings, "container.parameter=value; may be given several times")
        ->allow_extra_args(false);
    command->add_option("--samples", options.samples,
                        "Per pixel, in scenes with visible shapes: 4 if not given, 1 for none");
    command->add_option("--plugin", options.plugin, "Plug-in library that replaces the smoke");
    command->add_option("--plugin-timeout", options.plugin_timeout,
                        "Seconds that one call into a plug-in may take; default 60, 0 for no limit");
    command->add_flag("--check-opengl", options.check_opengl, "Name the OpenGL call behind each OpenGL error; slow");
    command->add_option("--trace", options.trace,
                        "JSON file with the time of each plug-in call, for the trace viewers of Chrome and Perfetto");
    command->add_flag("--report", messages.report, "Print the time of each kind of work");
    command->add_option(
        "--progress", messages.progress,
        "line, plain, json (lines of JSON; also for warnings and errors) or none; line on a terminal, else plain");
}

struct FarmCommand {
    tovu::FarmOptions options;
    std::string output;
    std::string finish;  // folder of the farm
    bool status = false;
    bool cancel = false;
};

void add_farm(CLI::App& app, FarmCommand& farm) {
    CLI::App* command = app.add_subcommand("farm",
                                           "Render a scene in chunks on the machines of a Slurm cluster. Takes the "
                                           "scene and the options of `render` too");
    command->add_option("-o,--output", farm.output, "x.mov or another video, or frames/%04d.png");
    command->add_option("--chunks", farm.options.chunks, "Number of parts that the frames are divided into");
    command
        ->add_option("--cluster", farm.options.cluster_arguments,
                     "An argument for sbatch, such as --cluster=--partition=night; may be given several times")
        ->allow_extra_args(false);
    command->add_flag("--status", farm.status, "With -o only: show the progress of the chunks");
    command->add_flag("--cancel", farm.cancel, "With -o only: cancel the jobs; pictures stay");
    command->add_option("--finish", farm.finish, "For the finish job: the folder of the farm")->group("");
    command->allow_extras();
}

// Parses the options that `farm` passes on to `render`. others: all arguments that are not options of `farm`.
int run_farm(FarmCommand& farm, const std::vector<std::string>& others) {
    const auto print = [](const std::string& line) {
        std::puts(line.c_str());
        std::fflush(stdout);
    };
    const auto status = [](const stage::Result<stage::Done>& done) { return done ? 0 : fail(done.error().message); };
    if (!farm.finish.empty()) return status(tovu::finish_farm(farm.finish, print));
    if (farm.output.empty()) return fail("farm: give -o, a video or numbered pictures");
    if (farm.status) return status(tovu::show_farm(farm.output, print));
    if (farm.cancel) return status(tovu::cancel_farm(farm.output, print));
    farm.options.render_arguments = others;
    farm.options.render_arguments.insert(farm.options.render_arguments.end(), {"-o", farm.output});
    CLI::App app("", "tovu");
    tovu::RenderOptions render;
    RenderMessages messages;
    add_render(app, render, messages);
    std::vector<std::string> arguments(farm.options.render_arguments.rbegin(), farm.options.render_arguments.rend());
    arguments.push_back("render");
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        return fail(std::string(error.what()) + "\nsee farm --help and render --help");
    }
    return status(tovu::start_farm(farm.options, render, print));
}

void add_record(CLI::App& app, tovu::RecordOptions& options) {
    CLI::App* command = app.add_subcommand("record", "Record the calls between a scene's plug-ins and the Stage");
    command->add_option("scene", options.scene, "Scene file")->required();
    command->add_option("-o,--output", options.output, "Text file")->required();
    command->add_option("--frames", options.frames, "How many frames; all when left out");
    command->add_option("--plugin", options.plugin, "Plug-in library that replaces the smoke");
}

void add_replay(CLI::App& app, tovu::ReplayOptions& options) {
    CLI::App* command = app.add_subcommand("replay", "Replay recorded calls, and show the first difference");
    command->add_option("calls", options.calls, "File that record wrote")->required();
    command->add_option("plugin", options.plugin, "Plug-in library that replaces the smoke or, without one, the first");
}

int run_trace(const tovu::TraceOptions& options) {
    const stage::Result<std::string> table = tovu::trace_scene(options);
    if (!table) return fail(table.error().message);
    std::fputs(table->c_str(), stdout);
    return 0;
}

void add_trace(CLI::App& app, tovu::TraceOptions& options) {
    CLI::App* command = app.add_subcommand("trace", "Show the cost of each frame of a scene");
    command->add_option("scene", options.scene, "Scene file")->required();
    command->add_option("--frames", options.frames, "A-B or A: only these frames, counted from 0");
    command->add_option("--json", options.json,
                        "JSON file with the time of each plug-in call, for the trace viewers of Chrome and Perfetto");
    command->add_option("--plugin", options.plugin, "Plug-in library that replaces the smoke");
}

void add_validate(CLI::App& app, tovu::ValidateOptions& options) {
    CLI::App* command = app.add_subcommand("validate", "Check a plug-in against the contract");
    command->add_option("plugin", options.plugin, "Library file, or a name that scenes take; the smoke when left out");
    command->add_option("--only", options.only, "Check or group to run; may be given several times")
        ->allow_extra_args(false);
    command->add_option("--seed", options.seed, "Seed of the values that are tried; 1 when left out");
    command->add_option("--timeout", options.timeout_seconds,
                        "Seconds that one call into the plug-in may take; 10 when left out");
    command->add_flag("--strict", options.strict, "Warnings count as failures");
    command->add_flag("--json", options.json, "JSON instead of lines");
    command->add_flag("--list", options.list, "List the checks");
    command->add_flag("--in-process", options.in_process, "For a debugger: no processes, no time limit; with --only");
}

int run(int argc, char** argv) {
    CLI::App app("Renders scenes with smoke: loads plug-ins into the Stage, a host without a window.", "tovu");
    app.require_subcommand(1);
    app.set_version_flag("--version", "tovu " TOVU_VERSION " (" TOVU_COMMIT ")");
    tovu::DocsOptions docs;
    FarmCommand farm;
    tovu::HashOptions hash;
    tovu::LintOptions lint;
    tovu::LooksOptions looks;
    tovu::ParamsOptions params;
    tovu::RecordOptions record;
    tovu::RenderOptions render;
    RenderMessages messages;
    tovu::ReplayOptions replay;
    tovu::TraceOptions trace;
    tovu::ValidateOptions validate;
    hash.plugin = lint.plugin = record.plugin = render.plugin = trace.plugin = tovu::smoke_plugin_file();
    add_bake(app);
    add_docs(app, docs);
    add_farm(app, farm);
    add_hash(app, hash);
    add_lint(app, lint);
    add_looks(app, looks);
    add_params(app, params);
    add_record(app, record);
    add_render(app, render, messages);
    add_replay(app, replay);
    add_trace(app, trace);
    add_validate(app, validate);
    app.add_subcommand("help", "Show this text");
    const std::vector<std::string> commands = {"render", "hash", "record", "replay", "params",   "looks", "bake",
                                               "farm",   "docs", "lint",   "trace",  "validate", "help"};
    if (argc > 1 && argv[1][0] != '-' && std::find(commands.begin(), commands.end(), argv[1]) == commands.end())
        return fail(std::string("unknown command '") + argv[1] + "': " + stage::name_hint(argv[1], commands));
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        return app.exit(wanted);
    } catch (const CLI::ParseError& error) {
        return fail(std::string(error.what()) + "\nsee --help");
    }
    tovu::install_fault_guard();
    if (app.got_subcommand("bake")) return fail(tovu::run_bake_script(app.get_subcommand("bake")->remaining()).message);
    if (app.got_subcommand("docs")) return run_docs(docs);
    if (app.got_subcommand("farm")) return run_farm(farm, app.get_subcommand("farm")->remaining());
    if (app.got_subcommand("hash")) return run_hash(hash);
    if (app.got_subcommand("lint")) return run_lint(lint);
    if (app.got_subcommand("looks")) return run_looks(*app.get_subcommand("looks"), looks);
    if (app.got_subcommand("record")) return run_record(record);
    if (app.got_subcommand("replay")) return run_replay(replay);
    if (app.got_subcommand("params")) return run_params(params);
    if (app.got_subcommand("render")) return run_render(render, messages);
    if (app.got_subcommand("trace")) return run_trace(trace);
    if (app.got_subcommand("validate")) return run_validate(validate);
    std::fputs(app.help().c_str(), stdout);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {  // such as std::bad_alloc
        return fail(error.what());
    }
}
