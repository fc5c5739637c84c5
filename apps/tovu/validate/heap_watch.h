// The heap as the plug-in uses it. The program's own malloc and free stand in front of the C library's: while no check
// watches, each call costs one comparison more.
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
    bool is_live;         // or it was freed
    uint32_t generation;  // as set when it was allocated
    uint32_t caller_count;
    uintptr_t callers[kMostCallers];  // return addresses, innermost first, those of the watch before the rest
};

/// False where sanitizers bring a heap of their own: nothing is watched then.
bool heap_can_be_watched();

struct HeapOptions {
    bool keep_freed =
        true;  // freed blocks are filled with a pattern and not used again, so that a use of theirs is seen
    bool note_callers = false;
};
/// From now on notes what the plug-in's code allocates.
void watch_heap(const HeapOptions& options);

/// New blocks of the plug-in's code hold this byte from now on, but those that are to hold zeros.
void fill_new_blocks(uint8_t byte);

/// Marks the blocks allocated from now on.
void set_heap_generation(uint32_t generation);

struct HeapTotals {
    int64_t live_blocks = 0;
    int64_t live_bytes = 0;
    int64_t allocations = 0;  // ever
};
HeapTotals heap_totals();

/// Blocks that are live and of this generation.
std::vector<HeapBlock> live_blocks(uint32_t generation);

/// The most recent allocation, for naming its place.
HeapBlock last_allocation();

/// The block that holds this address, or null. Freed ones are found with keep_freed only.
const HeapBlock* find_block(uintptr_t address);

/// What was done wrong with blocks since the last call.
enum class HeapFault : uint8_t { kWroteBehind, kWroteFreed, kFreedTwice };
struct HeapFinding {
    HeapFault fault;
    HeapBlock block;
};
std::vector<HeapFinding> take_heap_findings();

}  // namespace tovu::validate
