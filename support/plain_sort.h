// Plain version of the draw list's sort: a recursive merge sort, whose order the plug-in's sort must reproduce.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "render/sort.h"

namespace plain {

inline void compare_exchange(tovu::DrawEntry& first, tovu::DrawEntry& second) {
    if (first.key > second.key) std::swap(first, second);
}

inline void merge_runs(tovu::DrawEntry* entries, int32_t left_count, int32_t count, tovu::DrawEntry* scratch) {
    int32_t left = 0;
    int32_t right = left_count;
    for (int32_t i = 0; i < count; ++i) {
        const bool take_right = left == left_count || (right < count && entries[left].key > entries[right].key);
        scratch[i] = entries[take_right ? right++ : left++];
    }
    std::copy(scratch, scratch + count, entries);
}

inline void merge_sort(tovu::DrawEntry* entries, int32_t count, tovu::DrawEntry* scratch) {
    if (count > 3) {
        const int32_t half = count / 2;
        merge_sort(entries, half, scratch);
        merge_sort(entries + half, count - half, scratch);
        merge_runs(entries, half, count, scratch);
    } else if (count == 3) {
        compare_exchange(entries[0], entries[1]);
        compare_exchange(entries[0], entries[2]);
        compare_exchange(entries[1], entries[2]);
    } else if (count == 2) {
        compare_exchange(entries[0], entries[1]);
    }
}

inline void merge_sort(std::vector<tovu::DrawEntry>& entries) {
    std::vector<tovu::DrawEntry> scratch(entries.size());
    merge_sort(entries.data(), static_cast<int32_t>(entries.size()), scratch.data());
}

}  // namespace plain
