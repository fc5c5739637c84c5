// Sorting of the draw list.
#pragma once

#include <cstdint>

#include "../host/particle_record.h"

namespace tovu {

/// One particle to draw.
struct DrawEntry {
    Particle* particle;
    int32_t key;  // negated depth in thousandths of a unit; written only when the list is sorted
};

/// The sort's scratch memory, one block for the whole library. Grows to the largest count sorted, never shrinks, and is
/// freed when the library is unloaded.
struct SortScratch {
    DrawEntry* entries;
    int32_t capacity;  // entries
};
extern SortScratch sort_scratch;

/// Sorts `count` entries in place by ascending key. If the scratch memory cannot grow to `count`, the entries keep
/// their order.
///
/// The order, ties included, is that of this merge sort: halve (the first half rounded down) until two or three are
/// left; exchange pairs of these whose first key is greater, (0, 1) of two, (0, 1), (0, 2), (1, 2) of three; merge,
/// taking the left run first among equal keys. The exchanges can reverse equal keys, the merges cannot. So the
/// exchanges of all twos and threes are done first; any stable sort does the rest.
void merge_sort_entries(DrawEntry* entries, int32_t count);

}  // namespace tovu
