// Arrays that only grow, for what an instance keeps from frame to frame.
#pragma once

#include <cstdint>
#include <cstdlib>

namespace tovu {

/// Makes room for `needed` entries, contents kept. capacity: entries allocated. Returns false, with the array as it
/// was, where the memory is not there or the size exceeds what the platform can address. Entry: a type that may be
/// copied as bytes.
template <class Entry>
bool reserve(Entry*& entries, int32_t& capacity, int64_t needed) {
    if (needed <= capacity) return true;
    if (needed > INT32_MAX || static_cast<uint64_t>(needed) > SIZE_MAX / sizeof(Entry)) return false;
    void* grown = std::realloc(entries, static_cast<size_t>(needed) * sizeof(Entry));
    if (grown == nullptr) return false;
    entries = static_cast<Entry*>(grown);
    capacity = static_cast<int32_t>(needed);
    return true;
}

}  // namespace tovu
