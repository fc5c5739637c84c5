// Cases, and how they are timed: every case in turn, round after round, so that what the machine does meanwhile meets
// all of them alike.
#pragma once

#include <time.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// Particles.
constexpr int32_t kCounts[] = {100, 1000, 5000, 25000};
constexpr int32_t kFull = 25000;

/// Lists of every length up to where a sort may change its way, and beyond.
constexpr int32_t kSortCounts[] = {2,  3,  4,  5,  6,  7,  8,   10,  12,  14,  16,   18,   20,   22,    24,   25,
                                   26, 28, 32, 40, 48, 64, 100, 150, 200, 400, 1000, 2500, 5000, 10000, 25000};

/// Brackets what counts of a sample; what lies outside (putting records back, emptying caches) does not. Counts the
/// thread's processor time: what other programs run in between is not the sample's.
class Stopwatch {
  public:
    void start() { start_ = now(); }
    void stop() { seconds_ += now() - start_; }
    /// For what is counted, not timed: a number in the place of the seconds.
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
    double per = 1;    // particles, calls or frames in a sample: figures are seconds for one of them
    std::function<void(Stopwatch&)> sample;
    bool counted = false;  // one sample tells as much as many
};

/// "subject/variant/count"
std::string case_name(const char* subject_and_variant, int32_t count);

struct RunSettings {
    int rounds = 15;
    bool brief = false;       // an instant for each case: to see that it works
    std::string filter;       // regular expression on names; empty: all
    std::string json_path;    // what Google Benchmark writes of every round; empty: nothing
    bool show_rounds = true;  // a line on standard error after each round
};

/// Seconds by case name, one for each round: the median of the round's samples.
using Figures = std::map<std::string, std::vector<double>>;

/// Throws std::runtime_error when the file cannot be written.
Figures run_rounds(const std::vector<Case>& cases, const RunSettings& settings);

double median(std::vector<double> values);
double minimum(const std::vector<double>& values);

}  // namespace bench
