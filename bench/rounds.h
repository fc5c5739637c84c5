// Runs and times the cases in rounds: each round runs every case once, so that changes in the machine's speed affect
// all cases alike.
#pragma once

#include <time.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// Particles of the measured smokes.
constexpr int32_t kCounts[] = {100, 1000, 5000, 25000};
constexpr int32_t kFull = 25000;

/// Entries of the sorted lists: dense where the sort changes its algorithm, sparse above.
constexpr int32_t kSortCounts[] = {2,  3,  4,  5,  6,  7,  8,   10,  12,  14,  16,   18,   20,   22,    24,   25,
                                   26, 28, 32, 40, 48, 64, 100, 150, 200, 400, 1000, 2500, 5000, 10000, 25000};

/// Measures the part of a sample between start() and stop(), so that preparation (restoring records, emptying caches)
/// is left out. Uses the thread's processor time, which excludes other programs.
class Stopwatch {
  public:
    void start() { start_ = now(); }
    void stop() { seconds_ += now() - start_; }
    /// For cases that count: stores a number in place of the seconds.
    void count(double number) { seconds_ = number; }
    double seconds() const { return seconds_; }

  private:
    static double now() {
        timespec time;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    }
    double start_ = 0;
    double seconds_ = 0;
};

struct Case {
    std::string name;  // "subject/variant/count"
    double per = 1;    // units (particles, calls or frames) in a sample; a figure is seconds per unit
    std::function<void(Stopwatch&)> sample;
    bool counted = false;  // counts instead of timing: one sample is enough
};

/// "subject/variant/count"
std::string case_name(const char* subject_and_variant, int32_t count);

struct RunSettings {
    int rounds = 15;
    bool brief = false;       // one sample of each case, to check that it works
    std::string filter;       // regular expression for names; empty: all cases
    std::string json_path;    // Google Benchmark's output for each round; empty: none
    bool show_rounds = true;  // prints a line on standard error after each round
};

/// By case name: one value per round, the median of its samples in seconds.
using Figures = std::map<std::string, std::vector<double>>;

/// Throws std::runtime_error when the file cannot be written.
Figures run_rounds(const std::vector<Case>& cases, const RunSettings& settings);

double median(std::vector<double> values);
double minimum(const std::vector<double>& values);

}  // namespace bench
