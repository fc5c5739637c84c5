#include "sort.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "../math/float4.h"

namespace tovu {

SortScratch sort_scratch;

namespace {

// Runs when the library is unloaded, so that a host that loads it again leaks nothing.
[[gnu::destructor]] void free_sort_scratch() {
    std::free(sort_scratch.entries);
    sort_scratch = {};
}

constexpr int32_t kMaxMerged = 6;       // largest count for which the merge sort is fastest
constexpr int32_t kMaxCounted = 80;     // largest count for which comparing all pairs is faster than a radix sort
constexpr int32_t kCountingBlock = 16;  // entries that are compared with the others together
static_assert(kMaxCounted % kCountingBlock == 0);
constexpr int32_t kMaxDigitBits = 11;  // 2048 counters for each pass: all passes fit the first-level cache

/// Bits needed to write `value`.
constexpr int32_t bits_in(uint32_t value) {
    return 32 - std::countl_zero(value);
}

constexpr int32_t kMinDigitBits = bits_in(kMaxCounted);  // `digits_for` chooses no fewer for counts above kMaxCounted
constexpr int32_t kMaxPasses = (32 + kMinDigitBits - 1) / kMinDigitBits;

bool grow_scratch(int32_t count) {
    if (count <= sort_scratch.capacity) return true;
    void* block = std::realloc(sort_scratch.entries, static_cast<size_t>(count) * sizeof(DrawEntry));
    if (block == nullptr) return false;
    sort_scratch = {static_cast<DrawEntry*>(block), count};
    return true;
}

/// Applies the one effect of the merge sort's leaves that a stable sort does not have. In a leaf of three whose first
/// two keys are equal and greater than the third, the exchange of the first with the third reverses the equal two.
/// Every other leaf keeps the order of equal keys.
///
/// Halving `count` `depth` times gives 2^depth runs. Run i has (count + r) >> depth entries, r being i with its bits
/// reversed. At the depth where runs have 2 or 3 entries, or 3 or 4, those of three are leaves, and a run of four is
/// two leaves of two.
void reverse_ties_of_leaves(DrawEntry* entries, int32_t count) {
    const int32_t depth = count < 4 ? 0 : bits_in(static_cast<uint32_t>(count)) - 2;
    const uint32_t runs = 1u << depth;
    uint32_t reversed = 0;
    DrawEntry* run = entries;
    for (uint32_t i = 0; i < runs; ++i) {
        const uint32_t size = (static_cast<uint32_t>(count) + reversed) >> depth;
        if (size == 3 && run[0].key == run[1].key && run[2].key < run[0].key) std::swap(run[0], run[1]);
        run += size;
        reversed ^= runs - (runs >> (std::countr_one(i) + 1));  // adds 1 to the reversed number
    }
}

void compare_exchange(DrawEntry& first, DrawEntry& second) {
    if (first.key > second.key) std::swap(first, second);
}

/// Merges the first `left_count` entries with the rest. Only the left run is copied: writing never overtakes reading in
/// the right run.
void merge_runs(DrawEntry* entries, int32_t left_count, int32_t count) {
    if (entries[left_count - 1].key <= entries[left_count].key) return;
    DrawEntry* const left_run = sort_scratch.entries;
    std::memcpy(left_run, entries, static_cast<size_t>(left_count) * sizeof(DrawEntry));
    int32_t left = 0;
    int32_t right = left_count;
    DrawEntry* to = entries;
    while (left < left_count && right < count)
        *to++ = left_run[left].key > entries[right].key ? entries[right++] : left_run[left++];
    std::memcpy(to, left_run + left, static_cast<size_t>(left_count - left) * sizeof(DrawEntry));
}

void sort_by_merging(DrawEntry* entries, int32_t count) {
    if (count > 3) {
        const int32_t half = count / 2;
        sort_by_merging(entries, half);
        sort_by_merging(entries + half, count - half);
        merge_runs(entries, half, count);
    } else if (count == 3) {
        compare_exchange(entries[0], entries[1]);
        compare_exchange(entries[0], entries[2]);
        compare_exchange(entries[1], entries[2]);
    } else if (count == 2) {
        compare_exchange(entries[0], entries[1]);
    }
}

/// A stable counting sort by comparison: the place of an entry is the number of entries that come before it. Compares
/// all pairs without branches. The counts of a block are four variables, since compilers do not keep an array in
/// registers.
void sort_by_counting(DrawEntry* entries, int32_t count) {
    alignas(16) int32_t keys[kMaxCounted];
    for (int32_t i = 0; i < count; ++i) keys[i] = entries[i].key;
    for (int32_t i = count; i % kCountingBlock != 0; ++i) keys[i] = 0;

    for (int32_t block = 0; block < count; block += kCountingBlock) {
        const int32_t block_end = block + kCountingBlock < count ? block + kCountingBlock : count;
        Int4 own[4];
        std::memcpy(own, keys + block, sizeof(own));
        // Entries in front of the block come before unless their key is greater, entries behind it only if it is less.
        Int4 a = {block, block, block, block}, b = a, c = a, d = a;
        for (int32_t j = 0; j < block; ++j) {
            const Int4 key = {keys[j], keys[j], keys[j], keys[j]};
            a += key > own[0];
            b += key > own[1];
            c += key > own[2];
            d += key > own[3];
        }
        for (int32_t j = block_end; j < count; ++j) {
            const Int4 key = {keys[j], keys[j], keys[j], keys[j]};
            a -= key < own[0];
            b -= key < own[1];
            c -= key < own[2];
            d -= key < own[3];
        }
        const Int4 within = {0, 1, 2, 3};
        for (int32_t j = 0; j < block_end - block; ++j) {
            const int32_t key_j = keys[block + j];
            const Int4 key = {key_j, key_j, key_j, key_j};
            a -= (key < own[0]) | ((key == own[0]) & (within > j));  // equal keys keep their order
            b -= (key < own[1]) | ((key == own[1]) & (within + 4 > j));
            c -= (key < own[2]) | ((key == own[2]) & (within + 8 > j));
            d -= (key < own[3]) | ((key == own[3]) & (within + 12 > j));
        }
        const Int4 places[4] = {a, b, c, d};
        for (int32_t i = block; i < block_end; ++i)
            sort_scratch.entries[places[(i - block) / 4][(i - block) % 4]] = entries[i];
    }
    std::memcpy(entries, sort_scratch.entries, static_cast<size_t>(count) * sizeof(DrawEntry));
}

/// Leaves the entry with the greater key, or the first of equal keys, in `held`. Uses a mask, since compilers would
/// generate a branch, which is unpredictable here.
inline void exchange_without_branch(DrawEntry& held, DrawEntry& entry) {
    const auto own = reinterpret_cast<uintptr_t>(held.particle);
    const auto other = reinterpret_cast<uintptr_t>(entry.particle);
    const uintptr_t differing = (own ^ other) & (uintptr_t{0} - static_cast<uintptr_t>(entry.key >= held.key));
    const int32_t greater = held.key > entry.key ? held.key : entry.key;
    const int32_t less = held.key > entry.key ? entry.key : held.key;
    held = {reinterpret_cast<Particle*>(own ^ differing), greater};
    entry = {reinterpret_cast<Particle*>(other ^ differing), less};
}

/// A stable insertion sort, fast when entries are near their places, as in a list that was sorted in the frame before.
/// The entry with the greatest key so far is held back without a branch; most other entries are then in their place
/// already. Returns false, with the entries partly sorted, as soon as the moves exceed kFreeMoves and one for each
/// entry read.
bool sort_by_insertion(DrawEntry* entries, int32_t count) {
    constexpr int32_t kFreeMoves = 32;
    int32_t moves = 0;
    DrawEntry held = entries[0];
    int32_t last_key = INT32_MIN;
    for (int32_t i = 0; i + 1 < count; ++i) {
        DrawEntry entry = entries[i + 1];
        exchange_without_branch(held, entry);
        if (last_key <= entry.key) {
            entries[i] = entry;
            last_key = entry.key;
            continue;
        }
        int32_t place = i;
        do {
            entries[place] = entries[place - 1];
            --place;
        } while (place > 0 && entries[place - 1].key > entry.key);
        entries[place] = entry;
        moves += i - place;
        if (moves > kFreeMoves + i) {
            entries[i + 1] = held;
            return false;
        }
    }
    entries[count - 1] = held;
    return true;
}

/// Number of keys that are less than the one before.
int32_t count_descents(const DrawEntry* entries, int32_t count) {
    int32_t descents = 0;
    for (int32_t i = 1; i < count; ++i) descents += entries[i].key < entries[i - 1].key;
    return descents;
}

// Both checks return early on most lists.

bool is_ascending(const DrawEntry* entries, int32_t count) {
    return std::is_sorted(entries, entries + count,
                          [](const DrawEntry& a, const DrawEntry& b) { return a.key < b.key; });
}

/// Whether every key is less than the one before.
bool is_strictly_descending(const DrawEntry* entries, int32_t count) {
    const auto not_less = [](const DrawEntry& a, const DrawEntry& b) { return b.key >= a.key; };
    return std::adjacent_find(entries, entries + count, not_less) == entries + count;
}

struct KeyRange {
    int32_t lowest;
    int32_t highest;
};

KeyRange key_range(const DrawEntry* entries, int32_t count) {
    KeyRange range{entries[0].key, entries[0].key};
    for (int32_t i = 1; i < count; ++i) {
        const int32_t key = entries[i].key;
        range.lowest = std::min(range.lowest, key);
        range.highest = std::max(range.highest, key);
    }
    return range;
}

/// The digits into which a radix sort divides the keys.
struct Digits {
    int32_t passes;  // number of digits
    int32_t bits;    // of each digit
};

/// As few passes as possible with at most about as many counters as entries; then the narrowest digits for these
/// passes.
Digits digits_for(int32_t count, int32_t range_bits) {
    const int32_t size_bits = bits_in(static_cast<uint32_t>(count));
    const int32_t widest = std::clamp(size_bits, kMinDigitBits, kMaxDigitBits);
    const int32_t bits = std::max(range_bits, 1);  // 0 when all keys are equal
    const int32_t passes = (bits + widest - 1) / widest;
    return {passes, (bits + passes - 1) / passes};
}

using Counters = int32_t[kMaxPasses][1 << kMaxDigitBits];

/// Counts the entries with each value of each digit of key - lowest.
void count_digits(const DrawEntry* entries, int32_t count, uint32_t lowest, Digits digits, Counters& counters) {
    const uint32_t mask = (1u << digits.bits) - 1;
    for (int32_t pass = 0; pass < digits.passes; ++pass) std::memset(counters[pass], 0, sizeof(int32_t) << digits.bits);
    const auto count_entry = [&](int32_t i) {
        uint32_t rest = static_cast<uint32_t>(entries[i].key) - lowest;
        for (int32_t pass = 0; pass < digits.passes; ++pass, rest >>= digits.bits) ++counters[pass][rest & mask];
    };
    // In four parts of the list at once: neighbours in a nearly sorted list share their upper digit, and each increment
    // would wait for the one before.
    const int32_t quarter = count / 4;
    for (int32_t i = 0; i < quarter; ++i)
        for (int32_t part = 0; part < 4; ++part) count_entry(i + part * quarter);
    for (int32_t i = 4 * quarter; i < count; ++i) count_entry(i);
}

/// Replaces each count by the place of the first entry with that digit value.
void counts_to_places(int32_t* counters, uint32_t values) {
    int32_t place = 0;
    for (uint32_t value = 0; value < values; ++value) {
        const int32_t with_value = counters[value];
        counters[value] = place;
        place += with_value;
    }
}

/// A stable radix sort, least significant digit first. One pass counts all digits; then each digit takes one pass that
/// moves the entries.
void radix_sort(DrawEntry* entries, int32_t count, uint32_t lowest, Digits digits) {
    const uint32_t mask = (1u << digits.bits) - 1;
    Counters counters;
    count_digits(entries, count, lowest, digits, counters);

    DrawEntry* from = entries;
    DrawEntry* to = sort_scratch.entries;
    for (int32_t pass = 0; pass < digits.passes; ++pass) {
        int32_t* const places = counters[pass];
        counts_to_places(places, mask + 1);
        const int32_t shift = pass * digits.bits;
        for (int32_t i = 0; i < count; ++i)
            to[places[((static_cast<uint32_t>(from[i].key) - lowest) >> shift) & mask]++] = from[i];
        std::swap(from, to);
    }
    if (from != entries) std::memcpy(entries, from, static_cast<size_t>(count) * sizeof(DrawEntry));
}

void sort_few(DrawEntry* entries, int32_t count) {
    if (count_descents(entries, count) < count / 4) {  // nearly sorted: most runs merge at once
        sort_by_merging(entries, count);
        return;
    }
    reverse_ties_of_leaves(entries, count);
    sort_by_counting(entries, count);
}

void sort_many(DrawEntry* entries, int32_t count) {
    reverse_ties_of_leaves(entries, count);
    if (sort_by_insertion(entries, count)) return;
    const KeyRange range = key_range(entries, count);
    const uint32_t lowest = static_cast<uint32_t>(range.lowest);
    const int32_t range_bits = bits_in(static_cast<uint32_t>(range.highest) - lowest);
    radix_sort(entries, count, lowest, digits_for(count, range_bits));
}

}  // namespace

void merge_sort_entries(DrawEntry* entries, int32_t count) {
    if (count < 1 || !grow_scratch(count)) return;
    if (count <= kMaxMerged) {
        sort_by_merging(entries, count);
        return;
    }
    if (is_ascending(entries, count)) return;
    if (is_strictly_descending(entries, count))
        std::reverse(entries, entries + count);
    else if (count <= kMaxCounted)
        sort_few(entries, count);
    else
        sort_many(entries, count);
}

}  // namespace tovu
