#include "report.h"

#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <string>

namespace probe {
namespace {

struct Words {
    const char* name;
    const char* right;
    const char* why_not;
};
constexpr Words kWords[] = {
#define CHECK(constant, name, right, why_not) {name, right, why_not},
    PROBE_CHECKS(CHECK)
#undef CHECK
};

// Must not have a destructor, since the last report may be printed while the library is unloaded.
struct Result {
    bool ran;
    int times;        // number of failures
    char first[500];  // place and message
};
Result results[std::size(kWords)];
Place place{"", 0, 0};
bool news = false;

std::string place_text() {
    std::string text = place.entry_point;
    if (place.instance > 0) text += ", instance " + std::to_string(place.instance);
    if (place.frame > 0) text += ", frame " + std::to_string(place.frame);
    return text;
}

}  // namespace

void set_place(const Place& now) {
    place = now;
}

Place current_place() {
    return place;
}

void expect(Check check, bool holds, const char* message, ...) {
    Result& result = results[check];
    result.ran = true;
    if (holds) return;
    news = true;
    if (++result.times > 1) return;
    const size_t used = static_cast<size_t>(std::snprintf(result.first, 100, "%s: ", place_text().c_str()));
    va_list values;
    va_start(values, message);
    std::vsnprintf(result.first + used, sizeof result.first - used, message, values);
    va_end(values);
}

bool has_news() {
    return news;
}

void print_report(char* verdict, size_t capacity) {
    news = false;
    int ran = 0, failed = 0, skipped = 0;
    for (size_t i = 0; i < std::size(kWords); ++i) {
        const Words& words = kWords[i];
        const Result& result = results[i];
        ran += result.ran;
        failed += result.times > 0;
        skipped += !result.ran;
        if (!result.ran) std::printf("SKIP %s  %s.\n", words.name, words.why_not);
        if (result.times == 0) continue;
        const std::string times = result.times > 1 ? " (" + std::to_string(result.times) + " times)" : "";
        std::printf("FAIL %s  %s%s. Right: %s.\n", words.name, result.first, times.c_str(), words.right);
    }
    char line[200];
    std::snprintf(line, sizeof line, "TovuProbe: %s: %d of %d checks ran, %d failed, %d skipped",
                  failed > 0 ? "FAIL" : "PASS", ran, ran + skipped, failed, skipped);
    std::puts(line);
    std::fflush(stdout);
    if (capacity > 0) std::snprintf(verdict, capacity, "%s", line);
}

}  // namespace probe
