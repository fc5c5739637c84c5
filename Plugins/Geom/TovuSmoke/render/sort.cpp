#include "sort.h"

#include <bit>
#include <cstdlib>
#include <cstring>

namespace tovu {

SortScratch sort_scratch;

namespace {

constexpr int32_t kMergeLimit = 6;      // up to here merging is cheapest,
constexpr int32_t kCountingLimit = 80;  // up to here comparing all pairs, above it keeping counters
constexpr int32_t kCountingBlock = 16;  // entries whose counts are made together
static_assert(kCountingLimit % kCountingBlock == 0);
constexpr int32_t kMostDigitBits = 11;  // 2048 counters: those of all passes together stay in the first-level cache

/// Bits needed to write `value`.
constexpr int32_t bits_in(uint32_t value) {
    return 32 - std::countl_zero(value);
}

constexpr int32_t kFewestDigitBits = bits_in(kCountingLimit);  // as `digits_for` chooses for larger counts
constexpr int32_t kMostPasses = (32 + kFewestDigitBits - 1) / kFewestDigitBits;

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

void compare_exchange(DrawEntry& first, DrawEntry& second) {
    if (first.key <= second.key) return;
    const DrawEntry entry = first;
    first = second;
    second = entry;
}

/// Merges the first `left_count` entries with the rest. Only the left run leaves its place: what is written never
/// overtakes what is still to be read of the right one.
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

/// Four keys or counts, compared and added as one; a comparison gives -1 where it holds. Written out, since the counts
/// of a block have to stay in registers, where compilers do not keep an array.
typedef int32_t Lanes __attribute__((vector_size(16)));

/// Stable, by counting for each entry those that come before it: all pairs are compared, without a branch.
void sort_by_counting(DrawEntry* entries, int32_t count) {
    alignas(16) int32_t keys[kCountingLimit];
    for (int32_t i = 0; i < count; ++i) keys[i] = entries[i].key;
    for (int32_t i = count; i % kCountingBlock != 0; ++i) keys[i] = 0;

    for (int32_t block = 0; block < count; block += kCountingBlock) {
        const int32_t block_end = block + kCountingBlock < count ? block + kCountingBlock : count;
        Lanes own[4];
        std::memcpy(own, keys + block, sizeof(own));
        // Of those in front all come before but the greater ones, of those behind only the lesser ones.
        Lanes a = {block, block, block, block}, b = a, c = a, d = a;
        for (int32_t j = 0; j < block; ++j) {
            const Lanes key = {keys[j], keys[j], keys[j], keys[j]};
            a += key > own[0];
            b += key > own[1];
            c += key > own[2];
            d += key > own[3];
        }
        for (int32_t j = block_end; j < count; ++j) {
            const Lanes key = {keys[j], keys[j], keys[j], keys[j]};
            a -= key < own[0];
            b -= key < own[1];
            c -= key < own[2];
            d -= key < own[3];
        }
        const Lanes within = {0, 1, 2, 3};
        for (int32_t j = 0; j < block_end - block; ++j) {
            const int32_t key_j = keys[block + j];
            const Lanes key = {key_j, key_j, key_j, key_j};
            a -= (key < own[0]) | ((key == own[0]) & (within > j));  // of equal keys those in front come before
            b -= (key < own[1]) | ((key == own[1]) & (within + 4 > j));
            c -= (key < own[2]) | ((key == own[2]) & (within + 8 > j));
            d -= (key < own[3]) | ((key == own[3]) & (within + 12 > j));
        }
        const Lanes places[4] = {a, b, c, d};
        for (int32_t i = block; i < block_end; ++i)
            sort_scratch.entries[places[(i - block) / 4][(i - block) % 4]] = entries[i];
    }
    std::memcpy(entries, sort_scratch.entries, static_cast<size_t>(count) * sizeof(DrawEntry));
}

/// Leaves the greater key, or the first of equal ones, in `held`. Written with a mask, since compilers would take a
/// branch, which nothing could predict.
inline void exchange_without_branch(DrawEntry& held, DrawEntry& entry) {
    const auto own = reinterpret_cast<uintptr_t>(held.particle);
    const auto other = reinterpret_cast<uintptr_t>(entry.particle);
    const uintptr_t differing = (own ^ other) & (uintptr_t{0} - static_cast<uintptr_t>(entry.key >= held.key));
    const int32_t greater = held.key > entry.key ? held.key : entry.key;
    const int32_t less = held.key > entry.key ? entry.key : held.key;
    held = {reinterpret_cast<Particle*>(own ^ differing), greater};
    entry = {reinterpret_cast<Particle*>(other ^ differing), less};
}

/// Stable, and quick where entries stand near their places, as they do in the order of the frame before: the greatest
/// so far is held back, without a branch, and whatever passes it is then hardly ever out of place. Gives up, with some
/// entries sorted, once they had to be moved by more than kFreeMoves and one place each; returns whether it did not.
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

int32_t count_falls(const DrawEntry* entries, int32_t count) {
    int32_t falls = 0;  // keys that are less than the one before
    for (int32_t i = 1; i < count; ++i) falls += entries[i].key < entries[i - 1].key;
    return falls;
}

// Of most lists the first keys tell that they are neither of these.

bool is_ascending(const DrawEntry* entries, int32_t count) {
    for (int32_t i = 1; i < count; ++i)
        if (entries[i].key < entries[i - 1].key) return false;
    return true;
}

/// Whether every key is less than the one before.
bool is_descending(const DrawEntry* entries, int32_t count) {
    for (int32_t i = 1; i < count; ++i)
        if (entries[i].key >= entries[i - 1].key) return false;
    return true;
}

void reverse(DrawEntry* entries, int32_t count) {
    for (int32_t low = 0, high = count - 1; low < high; ++low, --high) {
        const DrawEntry entry = entries[low];
        entries[low] = entries[high];
        entries[high] = entry;
    }
}

struct KeyRange {
    int32_t lowest;
    int32_t highest;
};

KeyRange key_range(const DrawEntry* entries, int32_t count) {
    KeyRange range{entries[0].key, entries[0].key};
    for (int32_t i = 1; i < count; ++i) {
        const int32_t key = entries[i].key;
        range.lowest = key < range.lowest ? key : range.lowest;
        range.highest = key > range.highest ? key : range.highest;
    }
    return range;
}

/// How a radix sort cuts the keys.
struct Digits {
    int32_t passes;  // number of digits
    int32_t bits;    // of each digit
};

/// The widest digits whose counters are not more work than the entries, evened out over as many passes as they need.
Digits digits_for(int32_t count, int32_t range_bits) {
    const int32_t size_bits = bits_in(static_cast<uint32_t>(count));
    const int32_t widest = size_bits > kMostDigitBits     ? kMostDigitBits
                           : size_bits < kFewestDigitBits ? kFewestDigitBits
                                                          : size_bits;
    const int32_t bits = range_bits > 0 ? range_bits : 1;  // equal keys have none
    const int32_t passes = (bits + widest - 1) / widest;
    return {passes, (bits + passes - 1) / passes};
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

void sort_few(DrawEntry* entries, int32_t count) {
    if (count_falls(entries, count) < count / 4) {  // most runs are found in order
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
    if (count <= kMergeLimit) {
        sort_by_merging(entries, count);
        return;
    }
    if (is_ascending(entries, count)) return;
    if (is_descending(entries, count))
        reverse(entries, count);
    else if (count <= kCountingLimit)
        sort_few(entries, count);
    else
        sort_many(entries, count);
}

}  // namespace tovu
