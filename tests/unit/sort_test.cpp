#include "render/sort.h"

#include <random>
#include <vector>

#include "expect.h"
#include "failing_realloc.h"
#include "plain_sort.h"
#include "random_seed.h"

namespace tovu {

static bool operator==(const DrawEntry& a, const DrawEntry& b) {
    return a.particle == b.particle && a.key == b.key;
}

namespace {

using Entries = std::vector<DrawEntry>;

/// Entries with these keys; their particle pointers number the entries.
template <class KeyAt>
Entries entries_with(int32_t count, KeyAt key_at) {
    Entries entries;
    for (int32_t i = 0; i < count; ++i)
        entries.push_back({reinterpret_cast<Particle*>(static_cast<uintptr_t>(i) * sizeof(Particle)), key_at(i)});
    return entries;
}

struct KeyCase {
    const char* name;
    int32_t every_count_to;                                       // counts tried one by one; some larger ones follow
    int32_t (*key_at)(int32_t i, int32_t count, int32_t random);  // random: any of 32 bits
};
const KeyCase kKeyCases[] = {
    {"three values", 2000, [](int32_t, int32_t, int32_t r) { return r % 2; }},
    {"a tie in four", 2000, [](int32_t, int32_t n, int32_t r) { return r % (2 * n); }},
    {"a scene's depths", 200, [](int32_t, int32_t, int32_t r) { return r % 350000 - 550000; }},
    {"any key", 200, [](int32_t, int32_t, int32_t r) { return r; }},
    {"both ends of the range", 200, [](int32_t, int32_t, int32_t r) { return r < 0 ? INT32_MIN : INT32_MAX; }},
    {"ascending with ties", 200, [](int32_t i, int32_t, int32_t) { return i / 2; }},
    {"descending", 200, [](int32_t i, int32_t, int32_t) { return -i; }},
    {"descending with ties", 200, [](int32_t i, int32_t, int32_t) { return -i / 2; }},
    {"nearly ascending", 200, [](int32_t i, int32_t, int32_t r) { return 20 * i + r % 50; }},
    {"neighbours exchanged and ties", 200, [](int32_t i, int32_t, int32_t r) { return (i + (r & 1)) / 2; }},
    {"in order at first and then any", 200,
     [](int32_t i, int32_t n, int32_t r) { return i < n / 2 ? i / 3 : r % 500; }},
    {"ascending but for one", 200, [](int32_t i, int32_t n, int32_t) { return i == n / 2 ? 1 : i; }},
    {"all equal", 200, [](int32_t, int32_t, int32_t) { return 7; }},
};

TEST(MergeSort, OrdersEveryCountAsTheRecursion) {
    const RandomSeed seed;
    std::mt19937 random(seed.value);
    for (const KeyCase& row : kKeyCases) {
        std::vector<int32_t> counts = {333, 1000, 4095, 4096, 4097, 8191, 12345, 16384, 24999, 25000};
        for (int32_t count = 0; count <= row.every_count_to; ++count) counts.push_back(count);
        for (const int32_t count : counts) {
            Entries entries =
                entries_with(count, [&](int32_t i) { return row.key_at(i, count, static_cast<int32_t>(random())); });
            Entries expected = entries;
            plain::merge_sort(expected);
            merge_sort_entries(entries.data(), count);
            ASSERT_TRUE(entries == expected) << row.name << ", " << count << " entries";
        }
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
