#include "render/sort.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "failing_realloc.h"
#include "plain_sort.h"

namespace tovu {

static bool operator==(const DrawEntry& a, const DrawEntry& b) {
    return a.particle == b.particle && a.key == b.key;
}

namespace {

using Entries = std::vector<DrawEntry>;

/// Entries with these keys, whose particles stand for their places in the list and are never followed.
template <class KeyAt>
Entries entries_with(int32_t count, KeyAt key_at) {
    Entries entries;
    for (int32_t i = 0; i < count; ++i)
        entries.push_back({reinterpret_cast<Particle*>(static_cast<uintptr_t>(i) * sizeof(Particle)), key_at(i)});
    return entries;
}

void expect_order_of_merge_sort(Entries entries, const std::string& what) {
    Entries expected = entries;
    plain::merge_sort(expected);
    merge_sort_entries(entries.data(), static_cast<int32_t>(entries.size()));
    ASSERT_TRUE(entries == expected) << what << ", " << entries.size() << " entries";
}

struct KeyCase {
    const char* name;
    int32_t every_count_to;  // counts tried one by one; some larger ones follow
    int32_t (*key_at)(int32_t i, int32_t count, std::mt19937& random);
};
const KeyCase kKeyCases[] = {
    {"three values", 2000,
     [](int32_t, int32_t, std::mt19937& random) { return static_cast<int32_t>(random() % 3) - 1; }},
    {"a tie in four", 2000,
     [](int32_t, int32_t n, std::mt19937& random) {
         return static_cast<int32_t>(random() % static_cast<uint32_t>(4 * n));
     }},
    {"a scene's depths", 200,
     [](int32_t, int32_t, std::mt19937& random) { return static_cast<int32_t>(random() % 700000) - 900000; }},
    {"any key", 200, [](int32_t, int32_t, std::mt19937& random) { return static_cast<int32_t>(random()); }},
    {"both ends of the range", 200,
     [](int32_t, int32_t, std::mt19937& random) {
         return random() % 2 == 0 ? std::numeric_limits<int32_t>::min() : std::numeric_limits<int32_t>::max();
     }},
    {"ascending with ties", 200, [](int32_t i, int32_t, std::mt19937&) { return i / 2; }},
    {"descending", 200, [](int32_t i, int32_t, std::mt19937&) { return -i; }},
    {"descending with ties", 200, [](int32_t i, int32_t, std::mt19937&) { return -i / 2; }},
    {"nearly ascending", 200,
     [](int32_t i, int32_t, std::mt19937& random) { return 20 * i + static_cast<int32_t>(random() % 100); }},
    {"neighbours exchanged and ties", 200,
     [](int32_t i, int32_t, std::mt19937& random) { return (i + static_cast<int32_t>(random() % 3)) / 2; }},
    {"in order at first and then any", 200,
     [](int32_t i, int32_t n, std::mt19937& random) {
         return i < n / 2 ? i / 3 : static_cast<int32_t>(random() % 999);
     }},
    {"ascending but for one", 200, [](int32_t i, int32_t n, std::mt19937&) { return i == n / 2 ? 1 : i; }},
    {"all equal", 200, [](int32_t, int32_t, std::mt19937&) { return 7; }},
};

class MergeSort : public testing::TestWithParam<KeyCase> {};

TEST_P(MergeSort, OrdersEveryCountAsTheRecursion) {
    constexpr uint32_t kSeed = 20;
    std::mt19937 random(kSeed);
    const auto run = [&](int32_t count) {
        const Entries entries = entries_with(count, [&](int32_t i) { return GetParam().key_at(i, count, random); });
        expect_order_of_merge_sort(entries, GetParam().name);
    };
    for (int32_t count = 0; count <= GetParam().every_count_to; ++count) run(count);
    for (int32_t count : {333, 1000, 4095, 4096, 4097, 8191, 12345, 16384, 24999, 25000}) run(count);
}

INSTANTIATE_TEST_SUITE_P(Keys, MergeSort, testing::ValuesIn(kKeyCases), [](const auto& case_info) {
    std::string name = case_info.param.name;
    for (char& c : name)
        if (c == ' ' || c == '\'') c = '_';
    return name;
});

TEST(MergeSortLeaves, TurnAnEqualPairAroundWhenTheThirdIsLess) {
    Entries entries = entries_with(3, [](int32_t i) { return i == 2 ? 1 : 5; });
    const Entries expected = {entries[2], entries[1], entries[0]};
    merge_sort_entries(entries.data(), 3);
    EXPECT_TRUE(entries == expected);
}

TEST(SortScratch, GrowsToTheLargestCountAndNeverShrinks) {
    std::free(sort_scratch.entries);
    sort_scratch = {};
    const struct {
        int32_t count;
        int32_t capacity;
    } passes[] = {{0, 0}, {1, 1}, {5000, 5000}, {10, 5000}, {5001, 5001}};
    for (const auto& pass : passes) {
        Entries entries = entries_with(pass.count, [](int32_t i) { return i; });
        merge_sort_entries(entries.data(), pass.count);
        EXPECT_EQ(pass.capacity, sort_scratch.capacity) << pass.count << " entries";
    }
}

TEST(SortScratch, ThatCannotGrowLeavesTheCollectedOrder) {
    std::free(sort_scratch.entries);
    sort_scratch = {};
    const Entries collected = entries_with(3, [](int32_t i) { return -i; });
    Entries entries = collected;
    realloc_fails = true;
    merge_sort_entries(entries.data(), 3);
    realloc_fails = false;
    EXPECT_TRUE(entries == collected);
    EXPECT_EQ(0, sort_scratch.capacity);

    merge_sort_entries(entries.data(), 3);  // and tries again the next time
    EXPECT_EQ(collected[2].particle, entries[0].particle);
}

}  // namespace
}  // namespace tovu
