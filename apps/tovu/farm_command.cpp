#include "farm_command.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "farm_state.h"
#include "render_plan.h"
#include "source_pictures.h"
#include "stage/output/frame_names.h"
#include "stage/output/run_command.h"
#include "stage/output/whole_file.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;
using stage::Done;
using stage::Error;
using stage::Result;
using Arguments = std::vector<std::string>;

constexpr int kMaxTries = 4;  // submissions of a chunk

// Quotes a text as one word of a POSIX shell.
std::string shell_word(const std::string& text) {
    std::string word = "'";
    for (const char character : text) word += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return word + "'";
}

std::string script_text(const Arguments& command, const std::string& end) {
    std::string text = "#!/bin/sh\nexec";
    for (const std::string& argument : command) text += " " + shell_word(argument);
    return text + end + "\n";
}

// Escapes % in the folder, since Slurm replaces patterns such as %a in the names of logs.
std::string log_name(const fs::path& folder, const std::string& file) {
    std::string name;
    for (const char character : folder.string()) name += character == '%' ? "%%" : std::string(1, character);
    return name + "/" + file;
}

Result<std::string> run_slurm(const Arguments& arguments) {
    const Result<std::string> text = stage::run_command(arguments);
    if (text) return text;
    const std::string& message = text.error().message;
    if (message.find("slurm controller") != std::string::npos ||
        message.find("configuration source") != std::string::npos)
        return Error{message +
                     "\nstart Slurm's controller, slurmctld, and name its machine in slurm.conf; docs/farm.md "
                     "tells how to set up a farm"};
    if (message.find("there is no ") == std::string::npos) return text;
    return Error{
        fmt::format("there is no {} command: install Slurm, in Debian the package slurm-client, or slurm-wlm on "
                    "the machines that render; docs/farm.md tells how to set up a farm",
                    arguments[0])};
}

// Returns the job's number. The last line of `sbatch --parsable` is the number or "number;cluster".
Result<std::string> submit_job(const FarmState& state, const fs::path& folder, const Arguments& arguments,
                               const std::string& script) {
    Arguments command = {"sbatch", "--parsable", "--no-requeue", "--open-mode=append"};
    command.push_back("--job-name=" + fs::path(state.output).filename().string());
    command.insert(command.end(), state.cluster_arguments.begin(), state.cluster_arguments.end());
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.push_back((folder / script).string());
    const Result<std::string> printed = run_slurm(command);
    if (!printed) return printed;
    const std::string last = printed->substr(printed->rfind('\n') + 1);
    return last.substr(0, last.find(';'));
}

// Submits the chunks, and a job that checks the result after they end.
Result<Done> submit_chunks(FarmState& state, const fs::path& folder, const std::vector<int>& chunks) {
    const Result<std::string> array = submit_job(
        state, folder, {"--array=" + ranges_text(chunks), "--output=" + log_name(folder, "chunk-%a.log")}, "chunk.sh");
    if (!array) return array.error();
    state.chunk_job = *array;
    ++state.tries;
    const Result<std::string> finish = submit_job(
        state, folder, {"--dependency=afterany:" + *array, "--output=" + log_name(folder, "finish.log")}, "finish.sh");
    if (finish) {
        state.finish_job = *finish;
        return write_farm(folder, state);
    }
    if (const Result<std::string> taken_back = run_slurm({"scancel", *array}); !taken_back) return taken_back.error();
    return finish.error();
}

// The options of a render that change its pixels, as arguments.
Arguments scene_arguments(const RenderOptions& render) {
    Arguments arguments;
    const auto add = [&arguments](const char* option, const std::string& value) {
        if (!value.empty()) arguments.insert(arguments.end(), {option, value});
    };
    add("--frames", render.frames);
    add("--size", render.size);
    add("--seed", render.seed);
    add("--rate", render.rate);
    for (const std::string& setting : render.settings) add("--set", setting);
    add("--samples", render.samples);
    add("--plugin", render.plugin);
    add("--plugin-timeout", render.plugin_timeout);
    return arguments;
}

Result<FarmState> plan_farm(const FarmOptions& options, const RenderOptions& render, const fs::path& folder) {
    const Result<RenderPlan> plan = plan_render(render);
    if (!plan) return plan.error();
    const auto is_part_of_video = [](const OutputPlan& part) { return part.kind == OutputKind::kVideo; };
    if (!std::ranges::all_of(plan->outputs, is_part_of_video) && plan->outputs[0].kind != OutputKind::kNumbered)
        return Error{"farm: give one -o, a video or numbered pictures"};
    const OutputPlan& output = plan->outputs[0];
    FarmState state;
    state.output = output.name;
    state.frames = output.frames;
    const int frames = frame_count(output.frames);
    if (!parse_number(options.chunks, state.chunks) || state.chunks < 1 || state.chunks > frames)
        return Error{fmt::format("--chunks {}: must be a whole number from 1 to {}, the frames to render",
                                 options.chunks, frames)};
    state.cluster_arguments = options.cluster_arguments;
    const std::string program = fs::read_symlink("/proc/self/exe").string();
    const Arguments common = {"--resume", "--progress", "plain"};
    state.chunk_command = {program, "render"};
    if (output.kind == OutputKind::kNumbered) {
        state.pattern = output.name;
        const auto& given = options.render_arguments;
        std::remove_copy(given.begin(), given.end(), std::back_inserter(state.chunk_command), "--resume");
    } else {
        state.pattern = (folder / "frames" / "%06d.png").string();
        const Arguments scene = scene_arguments(render);
        state.chunk_command.insert(state.chunk_command.end(), {render.scene, "-o", state.pattern, "--bits", "16"});
        state.chunk_command.insert(state.chunk_command.end(), scene.begin(), scene.end());
        state.video_command = {program, "render", "--from", state.pattern, "--progress", "none"};
        state.video_command.insert(state.video_command.end(), options.render_arguments.begin(),
                                   options.render_arguments.end());
    }
    state.chunk_command.insert(state.chunk_command.end(), common.begin(), common.end());
    return state;
}

// Slurm's state of each job or task, by its number. Empty if Slurm no longer knows the jobs.
std::map<std::string, std::string> job_states(const std::string& jobs) {
    std::map<std::string, std::string> states;
    const Result<std::string> text =
        stage::run_command({"squeue", "--noheader", "--array", "--format=%i %T", "--jobs=" + jobs});
    if (!text) return states;
    std::istringstream lines(*text);
    for (std::string job, word; lines >> job >> word;) states[job] = word;
    return states;
}

std::map<std::string, std::string> job_states(const FarmState& state) {
    // One query for each job, since squeue prints nothing for a list that contains an unknown job.
    std::map<std::string, std::string> states = job_states(state.chunk_job);
    states.merge(job_states(state.finish_job));
    return states;
}

bool is_running(const fs::path& folder) {
    const Result<FarmState> state = read_farm(folder);
    return state && !state->finished && !job_states(*state).empty();
}

Result<Done> make_folder(const fs::path& folder, const FarmState& state) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) return Error{fmt::format("{}: {}", folder.string(), error.message())};
    const std::string chunk_end = fmt::format(" --chunk \"$SLURM_ARRAY_TASK_ID/{}\"", state.chunks);
    if (Result<Done> written =
            stage::write_whole_file(folder / "chunk.sh", script_text(state.chunk_command, chunk_end));
        !written)
        return written;
    return stage::write_whole_file(folder / "finish.sh",
                                   script_text({state.chunk_command[0], "farm", "--finish", folder.string()}, ""));
}

// The chunks that contain any of these frames.
std::vector<int> chunks_of(const FarmState& state, const std::vector<int>& frames) {
    std::vector<int> chunks;
    for (int chunk = 1; chunk <= state.chunks; ++chunk) {
        const FrameRange range = chunk_frames(state, chunk);
        if (std::ranges::any_of(frames, [&](int frame) { return contains(range, frame); })) chunks.push_back(chunk);
    }
    return chunks;
}

std::vector<int> frames_to_render(const FarmState& state) {
    if (Result<std::vector<int>> missing = missing_frames(state.pattern, state.frames); missing) return *missing;
    std::vector<int> all;  // no chunk has written a manifest
    for (int frame = state.frames.first; frame <= state.frames.last; ++frame) all.push_back(frame);
    return all;
}

Result<FarmState> farm_of(const std::string& output) {
    const Result<fs::path> folder = farm_folder(output);
    return folder ? read_farm(*folder) : folder.error();
}

}  // namespace

Result<Done> start_farm(const FarmOptions& options, const RenderOptions& render, const FarmPrint& print) {
    if (render.outputs.size() != 1) return Error{"farm: give one -o, a video or numbered pictures"};
    const Result<fs::path> folder = farm_folder(render.outputs[0]);
    if (!folder) return folder.error();
    Result<FarmState> state = plan_farm(options, render, *folder);
    if (!state) return state.error();
    if (is_running(*folder))
        return Error{
            fmt::format("-o {}: a farm is rendering it; wait for its end or cancel it with --cancel", state->output)};
    if (!render.resume && stage::read_manifest(state->pattern) && state->video_command.empty())
        return Error{
            fmt::format("-o {}: these pictures exist already; continue with --resume, or remove them", state->output)};
    std::error_code ignored;
    if (!render.resume) fs::remove_all(*folder, ignored);
    Result<Done> done = make_folder(*folder, *state);
    std::vector<int> chunks;
    for (int chunk = 1; chunk <= state->chunks; ++chunk) chunks.push_back(chunk);
    if (done) done = submit_chunks(*state, *folder, chunks);
    if (!done) {
        if (!render.resume) fs::remove_all(*folder, ignored);
        return done;
    }
    print(fmt::format("{}: jobs {} and {} are submitted; `farm --status -o {}` shows their progress", state->output,
                      state->chunk_job, state->finish_job, shell_word(state->output)));
    return Done{};
}

Result<Done> finish_farm(const std::string& folder, const FarmPrint& print) {
    Result<FarmState> state = read_farm(folder);
    if (!state) return state.error();
    const std::vector<int> frames = frames_to_render(*state);
    const std::vector<int> chunks = chunks_of(*state, frames);
    if (!chunks.empty() && state->tries < kMaxTries) {
        print(fmt::format("chunks {} are incomplete (frames {}); they are submitted again", ranges_text(chunks),
                          ranges_text(frames)));
        return submit_chunks(*state, folder, chunks);
    }
    if (!chunks.empty())
        return Error{fmt::format("{}: chunks {} are incomplete after {} tries, frames {} are missing; see {}",
                                 state->output, ranges_text(chunks), state->tries, ranges_text(frames),
                                 (fs::path(folder) / fmt::format("chunk-{}.log", chunks[0])).string())};
    if (!state->video_command.empty()) {
        if (const Result<std::string> made = stage::run_command(state->video_command); !made) return made.error();
        fs::remove_all(fs::path(folder) / "frames");
    }
    state->finished = true;
    print(state->output + ": is complete");
    return write_farm(folder, *state);
}

Result<Done> show_farm(const std::string& output, const FarmPrint& print) {
    const Result<FarmState> state = farm_of(output);
    if (!state) return state.error();
    if (state->finished) {
        print(state->output + ": is complete");
        return Done{};
    }
    const auto states = job_states(*state);
    const auto state_of = [&](const std::string& job) {
        const auto found = states.find(job);
        return found == states.end() ? std::string("not in the queue") : found->second;
    };
    print(fmt::format("{}: try {} of {}", state->output, state->tries, kMaxTries));
    const Result<stage::NumberedFiles> files = stage::existing_frames(state->pattern);
    for (int chunk = 1; chunk <= state->chunks; ++chunk) {
        const FrameRange range = chunk_frames(*state, chunk);
        const int frames = frame_count(range);
        const auto pictures =
            files ? std::distance(files->lower_bound(range.first), files->upper_bound(range.last)) : 0;
        print(fmt::format("chunk {}/{}, frames {}-{}: {} of {} pictures, {}", chunk, state->chunks, range.first,
                          range.last, pictures, frames,
                          pictures == frames ? "done" : state_of(fmt::format("{}_{}", state->chunk_job, chunk))));
    }
    print(fmt::format("the finish job: {}", state_of(state->finish_job)));
    std::istringstream log(stage::read_whole_file(*farm_folder(output) / "finish.log"));
    for (std::string line; std::getline(log, line);) print("    " + line);
    return Done{};
}

Result<Done> cancel_farm(const std::string& output, const FarmPrint& print) {
    const Result<FarmState> state = farm_of(output);
    if (!state) return state.error();
    // The finish job first, since it would submit chunks again.
    for (const std::string& job : {state->finish_job, state->chunk_job})
        if (const Result<std::string> done = run_slurm({"scancel", job}); !done) return done.error();
    print(fmt::format("{}: jobs {} and {} are cancelled", state->output, state->chunk_job, state->finish_job));
    return Done{};
}

}  // namespace tovu
