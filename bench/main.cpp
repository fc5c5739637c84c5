// The benchmark program: measures the cases and compares the results with the goals.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <stdexcept>

#include "cases.h"
#include "plots.h"
#include "report.h"

namespace bench {
namespace {

constexpr int kLongRunFrames = 3000;  // 20 times the mean life of a particle
constexpr int kBriefRunFrames = 3;

struct Options {
    RunSettings run;
    std::string plot_folder;
    bool check = false;
    bool list = false;
};

std::vector<Case> all_cases(Scene& scene, int frames) {
    std::vector<Case> cases;
    add_floor_cases(cases, scene);
    add_step_cases(cases, scene);
    add_sort_cases(cases, scene);
    add_quad_cases(cases, scene);
    add_frame_cases(cases, scene);
    add_source_cases(cases, scene);
    add_allocation_cases(cases, scene);
    add_peer_cases(cases, frames);
    return cases;
}

void print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

int run(const Options& options) {
    const int frames = options.run.brief ? kBriefRunFrames : kLongRunFrames;
    Scene scene(frames);
    const std::vector<Case> cases = all_cases(scene, frames);
    if (options.list) {
        for (const Case& each : cases) print(each.name + "\n");
        return 0;
    }
    const Figures figures = run_rounds(cases, options.run);
    for (const std::string& complaint : scene.host().complaints()) throw std::runtime_error(complaint);
    if (options.run.brief) return 0;
    if (!options.plot_folder.empty()) write_plot_data(figures, options.plot_folder);
    const std::vector<Goal> list = goals();
    const std::vector<Outcome> outcomes = judge(list, figures);
    print(about_this_build() + "\n" + goal_table(outcomes) + "\n" + figure_table(figures));
    for (const PeerNote& note : peer_notes()) print(std::string("\n") + note.peer + ": " + note.does + "\n");
    int missed = 0;
    for (const Outcome& outcome : outcomes) missed += outcome.verdict == Verdict::kMissed;
    return options.check && missed > 0 ? 1 : 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) try {
    bench::Options options;
    CLI::App app{"Measures the smoke, its parts, lower bounds, plain versions and other engines"};
    app.add_option("--rounds", options.run.rounds, "rounds over all cases; a ratio is the median over the rounds")
        ->check(CLI::Range(1, 1000));
    app.add_option("--filter", options.run.filter, "regular expression: runs only cases with a matching name");
    app.add_option("--json", options.run.json_path, "also writes the figures of each round to this file");
    app.add_option("--plot-data", options.plot_folder, "also writes data for plots to this folder")
        ->check(CLI::ExistingDirectory);
    app.add_flag("--check", options.check, "exit status 1 when a goal is missed");
    app.add_flag("--brief", options.run.brief, "runs each case once, without figures, to check that it works");
    app.add_flag("--list", options.list, "prints the names of the cases");
    CLI11_PARSE(app, argc, argv);
    if (options.run.brief) options.run.rounds = 1;
    options.run.show_rounds = !options.run.brief;
    return bench::run(options);
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 2;
}
