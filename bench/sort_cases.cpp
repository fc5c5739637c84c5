#include <algorithm>
#include <random>

#include "cases.h"
#include "plain_sort.h"
#include "render/draw_list.h"

namespace bench {
namespace {

using Entries = std::vector<tovu::DrawEntry>;

using Random = std::mt19937;

int32_t between(Random& random, int32_t low, int32_t high) {
    return std::uniform_int_distribution<int32_t>(low, high)(random);
}

// Depth keys of a cloud that is 1000 units deep; some keys are equal.
Entries random_entries(int32_t count, Random& random) {
    Entries entries(static_cast<size_t>(count));
    for (tovu::DrawEntry& entry : entries) entry = {nullptr, between(random, -1'000'000, 0)};
    return entries;
}

void sort_by_key(Entries& entries) {
    std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
}

Entries sorted_entries(int32_t count, Random& random) {
    Entries entries = random_entries(count, random);
    sort_by_key(entries);
    return entries;
}

// The order of the previous frame, after each particle has moved by up to one unit.
Entries nearly_sorted_entries(int32_t count, Random& random) {
    Entries entries = sorted_entries(count, random);
    for (tovu::DrawEntry& entry : entries) entry.key += between(random, -1000, 1000);
    return entries;
}

Entries reversed_entries(int32_t count, Random& random) {
    Entries entries = sorted_entries(count, random);
    std::reverse(entries.begin(), entries.end());
    return entries;
}

void by_smoke(Entries& entries) {
    tovu::merge_sort_entries(entries.data(), static_cast<int32_t>(entries.size()));
}

void by_plain_merge(Entries& entries) {
    static Entries scratch(kFull);
    plain::merge_sort(entries.data(), static_cast<int32_t>(entries.size()), scratch.data());
}

using Make = Entries (*)(int32_t, Random&);

// A sample sorts many small lists, long enough to time. Their keys differ, so that the branch predictor cannot learn
// them.
std::vector<Entries> make_lists(Make make, int32_t count) {
    Random random(static_cast<uint32_t>(count));
    std::vector<Entries> lists;
    for (int32_t i = 0; i < std::max(1, 20000 / count); ++i) lists.push_back(make(count, random));
    return lists;
}

Case sort_case(const std::string& name, Make make, int32_t count, void (*sort)(Entries&)) {
    return {case_name(name.c_str(), count), static_cast<double>(std::max(1, 20000 / count)) * count,
            [make, count, sort, lists = std::vector<Entries>()](Stopwatch& watch) mutable {
                if (lists.empty()) lists = make_lists(make, count);
                std::vector<Entries> work = lists;
                watch.start();
                for (Entries& each : work) sort(each);
                watch.stop();
            }};
}

void add_sorts(std::vector<Case>& cases, const std::string& order, Make make, int32_t count) {
    cases.push_back(sort_case("sort_" + order + "/smoke", make, count, by_smoke));
    cases.push_back(sort_case("sort_" + order + "/stable_sort", make, count, sort_by_key));
}

Case collect_case(Scene& scene, int32_t count, bool sorted) {
    const char* name = sorted ? "collect/and_sort" : "collect/list";
    return {case_name(name, count), static_cast<double>(count), [&scene, count, sorted](Stopwatch& watch) {
                Smoke& smoke = scene.long_run(count);
                set_features(smoke, {.sort = sorted});
                scene.next_frame();
                scene.step(smoke);  // as in a frame, where the step runs before the pass
                watch.start();
                tovu::collect_draw_list(*smoke.block);
                watch.stop();
            }};
}

}  // namespace

void add_sort_cases(std::vector<Case>& cases, Scene& scene) {
    for (const int32_t count : kCounts) {
        cases.push_back(collect_case(scene, count, false));
        cases.push_back(collect_case(scene, count, true));
        cases.push_back(sort_case("sort_random/plain_merge", random_entries, count, by_plain_merge));
        add_sorts(cases, "nearly_sorted", nearly_sorted_entries, count);
        add_sorts(cases, "sorted", sorted_entries, count);
        add_sorts(cases, "reversed", reversed_entries, count);
    }
    for (const int32_t count : kSortCounts) add_sorts(cases, "random", random_entries, count);
}

}  // namespace bench
