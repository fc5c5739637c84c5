// Ordering of the draw list.
#pragma once

#include <cstdint>

#include "../host/particle_record.h"

namespace tovu {

/// One particle to draw.
struct DrawEntry {
    Particle* particle;
    int32_t key;  // negated depth in thousandths of a unit; written only where the list is to be sorted
};

/// Room for the sort, one for the whole library: grows to the largest count sorted, never shrinks, is never freed.
struct SortScratch {
    DrawEntry* entries;
    int32_t capacity;  // entries
};
extern SortScratch sort_scratch;

/// Sorts `count` entries in place by ascending key. Where the scratch cannot grow to `count`, they stay as they are.
///
/// The order, ties included, is that of this merge sort: halve (the first half rounded down) until two or three are
/// left; order these by exchanging pairs where the first key is the greater, (0, 1) for two, (0, 1), (0, 2), (1, 2)
/// for three; merge, the left run first where keys are equal. The exchanges can turn equal keys around, the merges
/// cannot. So the exchanges of all twos and threes are done first; what is left is any stable sort.
void merge_sort_entries(DrawEntry* entries, int32_t count);

}  // namespace tovu
