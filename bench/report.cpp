#include "report.h"

#include <fmt/format.h>

#include <fstream>

#include "cases.h"
#include "commit.h"

namespace bench {
namespace {

const char* text_of(Verdict verdict) {
    switch (verdict) {
        case Verdict::kMet:
            return "met";
        case Verdict::kMissed:
            return "MISSED";
        case Verdict::kNotMeasured:
            break;
    }
    return "not measured";
}

std::string processor() {
    std::ifstream info("/proc/cpuinfo");
    std::string model, family, number;
    for (std::string line; std::getline(info, line) && number.empty();) {
        const std::string value = line.substr(line.find(':') + 1);
        if (line.starts_with("cpu family")) family = value;
        if (line.starts_with("model name"))
            model = value;
        else if (line.starts_with("model\t") && model.empty())
            number.clear();
        if (line.starts_with("cpu MHz")) number = value;
    }
    return fmt::format("{}, family{}, at{} MHz", model.empty() ? " unknown" : model, family, number);
}

}  // namespace

std::string about_this_build() {
    return fmt::format("- processor:{}\n- compiler: {}\n- flags: {}\n- commit: {}\n", processor(), TOVU_BENCH_COMPILER,
                       TOVU_BENCH_FLAGS, TOVU_COMMIT);
}

std::string goal_table(const std::vector<Outcome>& outcomes) {
    std::string table = "| # | goal | at most | measured | of minima | |\n|---|---|---|---|---|---|\n";
    for (const Outcome& outcome : outcomes) {
        const Goal& goal = *outcome.goal;
        const bool known = outcome.verdict != Verdict::kNotMeasured;
        const std::string where = outcome.worst.empty() ? "" : fmt::format(" ({})", outcome.worst);
        table += fmt::format("| {} | {}{} | {:g} | {} | {} | {} |\n", goal.id, goal.what, where, goal.bound,
                             known ? fmt::format("{:.3g}", outcome.measured) : "",
                             known ? fmt::format("{:.3g}", outcome.of_minima) : "", text_of(outcome.verdict));
    }
    return table;
}

std::string figure_table(const Figures& figures) {
    std::string table = "| case | ns | fastest round |\n|---|---|---|\n";
    for (const auto& [name, seconds] : figures)
        if (!name.starts_with("allocations/"))
            table += fmt::format("| {} | {:.2f} | {:.2f} |\n", name, median(seconds) * 1e9, minimum(seconds) * 1e9);
    return table;
}

}  // namespace bench
