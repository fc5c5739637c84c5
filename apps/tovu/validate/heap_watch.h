// Watches the heap blocks of the plug-in. The program replaces malloc and free of the C library; while no check
// watches, a call costs one more comparison.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tovu::validate {

/// A block that the plug-in's code allocated.
struct HeapBlock {
    static constexpr int kMostCallers = 10;
    uintptr_t address;
    size_t bytes;
    bool is_live;         // false: freed
    uint32_t generation;  // at the time of the allocation
    uint32_t caller_count;
    uintptr_t callers[kMostCallers];  // return addresses, innermost first; the first ones are in the watch
};

/// False in builds with sanitizers: they replace the heap, so its use is not checked there.
bool heap_can_be_watched();

struct HeapOptions {
    bool keep_freed = true;  // fill freed blocks with a pattern and do not reuse them, so that later writes are found
    bool note_callers = false;
};
/// Records the allocations of the plug-in's code from now on.
void watch_heap(const HeapOptions& options);

/// Fills new blocks of the plug-in's code with this byte from now on, except blocks of calloc.
void fill_new_blocks(uint8_t byte);

/// Sets the generation of the blocks that are allocated from now on.
void set_heap_generation(uint32_t generation);

struct HeapTotals {
    int64_t live_blocks = 0;
    int64_t live_bytes = 0;
    int64_t allocations = 0;  // since the start
};
HeapTotals heap_totals();

/// The live blocks of this generation.
std::vector<HeapBlock> live_blocks(uint32_t generation);

/// The most recent allocation.
HeapBlock last_allocation();

/// The block that contains this address, or null. Freed blocks are found only with keep_freed.
const HeapBlock* find_block(uintptr_t address);

enum class HeapFault : uint8_t { kWroteBehind, kWroteFreed, kFreedTwice };
struct HeapFinding {
    HeapFault fault;
    HeapBlock block;
};
/// Removes and returns the findings since the last call.
std::vector<HeapFinding> take_heap_findings();

}  // namespace tovu::validate
