#include "rounds.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace bench {
namespace {

constexpr int kMinSamples = 5;
constexpr int kMaxSamples = 200;
constexpr double kSecondsPerRound = 0.004;  // a case takes samples in a round until their sum reaches this

double sample_seconds(const Case& of) {
    Stopwatch watch;
    of.sample(watch);
    return watch.seconds();
}

// The median ignores samples that were disturbed by other programs.
double round_seconds(const Case& of, bool brief) {
    if (brief || of.counted) return sample_seconds(of);
    sample_seconds(of);  // warms the caches
    std::vector<double> samples;
    double total = 0;
    while (samples.size() < kMinSamples || (total < kSecondsPerRound && samples.size() < kMaxSamples)) {
        samples.push_back(sample_seconds(of));
        total += samples.back();
    }
    return median(samples);
}

/// Collects the figures of each round and forwards the runs to the JSON reporter.
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& context) override {
        if (!context_given_) json.ReportContext(context);
        context_given_ = true;
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) figures[run.run_name.function_name].push_back(run.real_accumulated_time);
        json.ReportRuns(runs);
    }

    Figures figures;
    benchmark::JSONReporter json;

  private:
    bool context_given_ = false;
};

void register_case(const Case& of, bool brief) {
    benchmark::RegisterBenchmark(of.name.c_str(),
                                 [&of, brief](benchmark::State& state) {
                                     for (auto unused : state) {
                                         (void)unused;
                                         state.SetIterationTime(round_seconds(of, brief) / of.per);
                                     }
                                     state.SetItemsProcessed(state.iterations());
                                 })
        ->Iterations(1)
        ->UseManualTime()
        ->Unit(benchmark::kNanosecond);
}

}  // namespace

Figures run_rounds(const std::vector<Case>& cases, const RunSettings& settings) {
    for (const Case& each : cases) register_case(each, settings.brief);
    Collector collector;
    std::ofstream json_file;
    if (!settings.json_path.empty()) {
        json_file.open(settings.json_path);
        if (!json_file) throw std::runtime_error("cannot write '" + settings.json_path + "'");
    }
    collector.json.SetOutputStream(&json_file);
    collector.json.SetErrorStream(&json_file);
    const std::string filter = settings.filter.empty() ? "." : settings.filter;
    for (int round = 1; round <= settings.rounds; ++round) {
        benchmark::RunSpecifiedBenchmarks(&collector, filter);
        if (settings.show_rounds) std::fprintf(stderr, "\rround %d of %d", round, settings.rounds);
    }
    if (settings.show_rounds) std::fputc('\n', stderr);
    collector.json.Finalize();
    json_file.flush();
    if (!settings.json_path.empty() && !json_file)
        throw std::runtime_error("cannot write '" + settings.json_path + "'");
    return collector.figures;
}

std::string case_name(const char* subject_and_variant, int32_t count) {
    return std::string(subject_and_variant) + "/" + std::to_string(count);
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double minimum(const std::vector<double>& values) {
    return *std::min_element(values.begin(), values.end());
}

}  // namespace bench
