#include "sort.h"

#include <bit>
#include <cstdlib>
#include <cstring>

namespace tovu {

SortScratch sort_scratch;

namespace {

constexpr int32_t kMostDigitBits = 11;   // 2048 counters: those of all passes together stay in the first-level cache
constexpr int32_t kMostPasses = 8;       // digits of at least 4 bits: enough for 32
constexpr int32_t kInsertionLimit = 24;  // up to here moving single entries is cheaper than keeping counters

/// Bits needed to write `value`.
int32_t bits_in(uint32_t value) {
    return 32 - std::countl_zero(value);
}

bool grow_scratch(int32_t count) {
    if (count <= sort_scratch.capacity) return true;
    void* block = std::realloc(sort_scratch.entries, static_cast<size_t>(count) * sizeof(DrawEntry));
    if (block == nullptr) return false;
    sort_scratch = {static_cast<DrawEntry*>(block), count};
    return true;
}

/// Does to the entries what the merge sort's leaves do and no stable sort by key would: of three entries with the first
/// two keys equal and the third less, the exchange of the first with the third turns the equal two around. All other
/// leaves, ties or not, leave equal keys in the order they had.
///
/// Halving `count` `depth` times leaves 2^depth runs; run i has (count + i with its bits reversed) >> depth entries. At
/// the depth where that gives 2 and 3, or 3 and 4, the threes are leaves, and a four is two leaves of two.
void reverse_ties_of_leaves(DrawEntry* entries, int32_t count) {
    const int32_t depth = count < 4 ? 0 : bits_in(static_cast<uint32_t>(count)) - 2;
    const uint32_t runs = 1u << depth;
    uint32_t reversed = 0;
    DrawEntry* run = entries;
    for (uint32_t i = 0; i < runs; ++i) {
        const uint32_t size = (static_cast<uint32_t>(count) + reversed) >> depth;
        if (size == 3 && run[0].key == run[1].key && run[2].key < run[0].key) {
            const DrawEntry entry = run[0];
            run[0] = run[1];
            run[1] = entry;
        }
        run += size;
        reversed ^= runs - (runs >> (std::countr_one(i) + 1));  // adds 1 from the other end
    }
}

void insertion_sort(DrawEntry* entries, int32_t count) {
    for (int32_t i = 1; i < count; ++i) {
        const DrawEntry entry = entries[i];
        int32_t hole = i;
        for (; hole > 0 && entries[hole - 1].key > entry.key; --hole) entries[hole] = entries[hole - 1];
        entries[hole] = entry;
    }
}

/// How the keys lie: their range, and whether nothing is left to do.
struct KeySurvey {
    int32_t lowest;
    int32_t highest;
    bool ascending;   // no key is less than the one before
    bool descending;  // every key is less than the one before
};

KeySurvey survey_keys(const DrawEntry* entries, int32_t count) {
    int32_t lowest = entries[0].key;
    int32_t highest = lowest;
    int32_t falls = 0;
    int32_t rises_or_ties = 0;
    for (int32_t i = 1; i < count; ++i) {
        const int32_t key = entries[i].key;
        lowest = key < lowest ? key : lowest;
        highest = key > highest ? key : highest;
        falls += key < entries[i - 1].key;
        rises_or_ties += key >= entries[i - 1].key;
    }
    return {lowest, highest, falls == 0, rises_or_ties == 0};
}

void reverse(DrawEntry* entries, int32_t count) {
    for (int32_t low = 0, high = count - 1; low < high; ++low, --high) {
        const DrawEntry entry = entries[low];
        entries[low] = entries[high];
        entries[high] = entry;
    }
}

/// How a radix sort cuts the keys.
struct Digits {
    int32_t passes;  // number of digits
    int32_t bits;    // of each digit
};

/// The widest digits whose counters are not more work than the entries, evened out over as many passes as they need.
Digits digits_for(int32_t count, int32_t range_bits) {
    const int32_t size_bits = bits_in(static_cast<uint32_t>(count));
    const int32_t widest = size_bits < kMostDigitBits ? size_bits : kMostDigitBits;
    const int32_t passes = (range_bits + widest - 1) / widest;
    return {passes, (range_bits + passes - 1) / passes};
}

using Counters = int32_t[kMostPasses][1 << kMostDigitBits];

/// Counts the entries with each value of each digit of key - lowest.
void count_digits(const DrawEntry* entries, int32_t count, uint32_t lowest, Digits digits, Counters& counters) {
    const uint32_t mask = (1u << digits.bits) - 1;
    for (int32_t pass = 0; pass < digits.passes; ++pass) std::memset(counters[pass], 0, sizeof(int32_t) << digits.bits);
    const auto count_entry = [&](int32_t i) {
        uint32_t rest = static_cast<uint32_t>(entries[i].key) - lowest;
        for (int32_t pass = 0; pass < digits.passes; ++pass, rest >>= digits.bits) ++counters[pass][rest & mask];
    };
    // From four places at once: neighbours in a list that is nearly in order share their upper digit, and each count
    // would wait for the one before.
    const int32_t quarter = count / 4;
    for (int32_t i = 0; i < quarter; ++i)
        for (int32_t part = 0; part < 4; ++part) count_entry(i + part * quarter);
    for (int32_t i = 4 * quarter; i < count; ++i) count_entry(i);
}

/// Turns counts into the places where the first entry with each value goes.
void counts_to_places(int32_t* counters, uint32_t values) {
    int32_t place = 0;
    for (uint32_t value = 0; value < values; ++value) {
        const int32_t with_value = counters[value];
        counters[value] = place;
        place += with_value;
    }
}

/// Stable, least significant digit first: all digits are counted in one reading, then the entries moved once for each.
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
        DrawEntry* const swapped = from;
        from = to;
        to = swapped;
    }
    if (from != entries) std::memcpy(entries, from, static_cast<size_t>(count) * sizeof(DrawEntry));
}

}  // namespace

void merge_sort_entries(DrawEntry* entries, int32_t count) {
    if (count < 1 || !grow_scratch(count)) return;
    const KeySurvey survey = survey_keys(entries, count);
    if (survey.ascending) return;
    if (survey.descending) {
        reverse(entries, count);
        return;
    }
    reverse_ties_of_leaves(entries, count);
    if (count <= kInsertionLimit) {
        insertion_sort(entries, count);
        return;
    }
    const uint32_t lowest = static_cast<uint32_t>(survey.lowest);
    const int32_t range_bits = bits_in(static_cast<uint32_t>(survey.highest) - lowest);
    radix_sort(entries, count, lowest, digits_for(count, range_bits));
}

}  // namespace tovu
