#include "heap_watch.h"

#include <execinfo.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "watch.h"

#if defined(__SANITIZE_ADDRESS__) || !defined(__GLIBC__)
#define TOVU_OWN_MALLOC 0
#else
#define TOVU_OWN_MALLOC 1
#endif

namespace tovu::validate {
namespace {

constexpr size_t kGuardBytes = 16;
constexpr unsigned char kGuardPattern = 0xA7;
constexpr uint32_t kFreedPattern = 0x7FFDDEAD;  // NaN as a float, not a valid address
constexpr uint32_t kMostBlocks = 1u << 20;      // size of the table; at 3/4 no more blocks are recorded
constexpr size_t kMostFreedBytes = size_t{64} << 20;

// Recorded blocks in a hash table by address: open addressing with linear probing. Entries of freed blocks stay.
struct Heap {
    std::atomic_flag busy = ATOMIC_FLAG_INIT;
    HeapBlock* table = nullptr;
    uint32_t* places = nullptr;  // indices of the used entries, in the order of their first use
    uint32_t used = 0;
    bool keep_freed = false;
    bool note_callers = false;
    int fill = -1;  // byte that new blocks are filled with; negative: none
    size_t freed_bytes = 0;
    uint32_t generation = 0;
    HeapTotals totals;
    HeapBlock last{};
    HeapFinding findings[64];
    int finding_count = 0;
};

Heap the_heap;
std::atomic<bool> the_heap_is_watched = false;
thread_local bool the_heap_is_in_use = false;  // allocations of the watch itself are not recorded

template <class Item>
Item* map_table() {
    void* pages = mmap(nullptr, kMostBlocks * sizeof(Item), PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    return static_cast<Item*>(pages);
}

/// Locks the_heap.
class HeapLock {
  public:
    HeapLock() {
        the_heap_is_in_use = true;
        while (the_heap.busy.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~HeapLock() {
        the_heap.busy.clear(std::memory_order_release);
        the_heap_is_in_use = false;
    }
    HeapLock(const HeapLock&) = delete;
    HeapLock& operator=(const HeapLock&) = delete;
};

uint32_t hash_of(uintptr_t address) {
    return static_cast<uint32_t>((static_cast<uint64_t>(address) >> 4) * 0x9E3779B97F4A7C15ull >> 40) % kMostBlocks;
}

HeapBlock* entry_of(uintptr_t address) {
    for (uint32_t i = hash_of(address);; i = (i + 1) % kMostBlocks) {
        HeapBlock& entry = the_heap.table[i];
        if (entry.address == 0 || entry.address == address) return &entry;
    }
}

[[maybe_unused]] void note_callers(HeapBlock& block) {
    void* frames[HeapBlock::kMostCallers];
    const int count = backtrace(frames, HeapBlock::kMostCallers);
    block.caller_count = static_cast<uint32_t>(count);
    for (int i = 0; i < count; ++i) block.callers[i] = reinterpret_cast<uintptr_t>(frames[i]);
}

void add_heap_finding(HeapFault fault, const HeapBlock& block) {
    if (the_heap.finding_count < static_cast<int>(std::size(the_heap.findings)))
        the_heap.findings[the_heap.finding_count++] = {fault, block};
}

bool guard_is_intact(const HeapBlock& block) {
    const auto* guard = reinterpret_cast<const unsigned char*>(block.address + block.bytes);
    return std::all_of(guard, guard + kGuardBytes, [](unsigned char byte) { return byte == kGuardPattern; });
}

void fill_freed(const HeapBlock& block) {
    auto* words = reinterpret_cast<unsigned char*>(block.address);
    for (size_t i = 0; i + 4 <= block.bytes; i += 4) std::memcpy(words + i, &kFreedPattern, 4);
}

bool freed_is_intact(const HeapBlock& block) {
    const auto* words = reinterpret_cast<const unsigned char*>(block.address);
    for (size_t i = 0; i + 4 <= block.bytes; i += 4)
        if (std::memcmp(words + i, &kFreedPattern, 4) != 0) return false;
    return true;
}

[[maybe_unused]] bool is_noted_now() {
    return the_heap_is_watched.load(std::memory_order_relaxed) && !the_heap_is_in_use && in_plugin_code();
}

/// Records a block, which has kGuardBytes more than `bytes`.
[[maybe_unused, gnu::noinline]] void note_block(void* memory, size_t bytes) {
    if (!memory) return;
    const HeapLock lock;
    std::memset(static_cast<char*>(memory) + bytes, kGuardPattern, kGuardBytes);
    HeapBlock block{};
    block.address = reinterpret_cast<uintptr_t>(memory);
    block.bytes = bytes;
    block.is_live = true;
    block.generation = the_heap.generation;
    if (the_heap.note_callers) note_callers(block);
    ++the_heap.totals.allocations;
    the_heap.last = block;
    if (the_heap.used > kMostBlocks / 4 * 3) return;
    HeapBlock* entry = entry_of(block.address);
    if (entry->address == 0) the_heap.places[the_heap.used++] = static_cast<uint32_t>(entry - the_heap.table);
    *entry = block;
    ++the_heap.totals.live_blocks;
    the_heap.totals.live_bytes += static_cast<int64_t>(bytes);
}

[[maybe_unused]] void fill_and_note(void* memory, size_t bytes) {
    if (memory && the_heap.fill >= 0) std::memset(memory, the_heap.fill, bytes);
    note_block(memory, bytes);
}

/// Records that a block is freed. False if the memory must not be returned to the C library.
[[maybe_unused]] bool note_free(void* memory) {
    const HeapLock lock;
    HeapBlock* block = entry_of(reinterpret_cast<uintptr_t>(memory));
    if (block->address == 0) return true;
    if (!block->is_live) {
        if (!the_heap.keep_freed) return true;
        add_heap_finding(HeapFault::kFreedTwice, *block);
        return false;
    }
    if (!guard_is_intact(*block)) add_heap_finding(HeapFault::kWroteBehind, *block);
    block->is_live = false;
    --the_heap.totals.live_blocks;
    the_heap.totals.live_bytes -= static_cast<int64_t>(block->bytes);
    if (!the_heap.keep_freed || the_heap.freed_bytes > kMostFreedBytes) return true;
    the_heap.freed_bytes += block->bytes;
    fill_freed(*block);
    return false;
}

[[maybe_unused]] const HeapBlock* noted_live(void* memory) {
    const HeapLock lock;
    const HeapBlock* block = entry_of(reinterpret_cast<uintptr_t>(memory));
    return block->address != 0 && block->is_live ? block : nullptr;
}

}  // namespace

bool heap_can_be_watched() {
    return TOVU_OWN_MALLOC;
}

void watch_heap(const HeapOptions& options) {
    if (!the_heap.table) {
        the_heap.table = map_table<HeapBlock>();
        the_heap.places = map_table<uint32_t>();
    }
    the_heap.keep_freed = options.keep_freed;
    the_heap.note_callers = options.note_callers;
    the_heap_is_watched = true;
}

void fill_new_blocks(uint8_t byte) {
    the_heap.fill = byte;
}

void set_heap_generation(uint32_t generation) {
    the_heap.generation = generation;
}

HeapTotals heap_totals() {
    return the_heap.totals;
}

std::vector<HeapBlock> live_blocks(uint32_t generation) {
    std::vector<HeapBlock> blocks;
    for (uint32_t i = 0; i < the_heap.used; ++i) {
        const HeapBlock& block = the_heap.table[the_heap.places[i]];
        if (block.is_live && block.generation == generation) blocks.push_back(block);
    }
    return blocks;
}

HeapBlock last_allocation() {
    return the_heap.last;
}

const HeapBlock* find_block(uintptr_t address) {
    const HeapBlock* found = nullptr;
    for (uint32_t i = 0; i < the_heap.used; ++i) {
        const HeapBlock& block = the_heap.table[the_heap.places[i]];
        if (address < block.address || address - block.address >= std::max<size_t>(block.bytes, 1)) continue;
        if (!found || block.is_live) found = &block;
    }
    return found;
}

std::vector<HeapFinding> take_heap_findings() {
    std::vector<HeapFinding> findings(the_heap.findings, the_heap.findings + the_heap.finding_count);
    the_heap.finding_count = 0;
    for (uint32_t i = 0; i < the_heap.used; ++i) {
        HeapBlock& block = the_heap.table[the_heap.places[i]];
        if (block.is_live && !guard_is_intact(block)) {
            findings.push_back({HeapFault::kWroteBehind, block});
            std::memset(reinterpret_cast<char*>(block.address + block.bytes), kGuardPattern, kGuardBytes);
        }
        if (!block.is_live && the_heap.keep_freed && the_heap.freed_bytes <= kMostFreedBytes &&
            !freed_is_intact(block)) {
            findings.push_back({HeapFault::kWroteFreed, block});
            fill_freed(block);
        }
    }
    return findings;
}

}  // namespace tovu::validate

#if TOVU_OWN_MALLOC

using namespace tovu::validate;

#define TOVU_HEAP_EXPORT __attribute__((visibility("default")))

extern "C" {

// NOLINTBEGIN(readability-identifier-naming): the C library's own
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* memory, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* memory);
// NOLINTEND(readability-identifier-naming)

TOVU_HEAP_EXPORT void* malloc(size_t bytes) {
    if (!is_noted_now() || bytes + kGuardBytes < bytes) return __libc_malloc(bytes);
    void* memory = __libc_malloc(bytes + kGuardBytes);
    fill_and_note(memory, bytes);
    return memory;
}

TOVU_HEAP_EXPORT void* calloc(size_t count, size_t bytes) {
    size_t all = 0;
    if (!is_noted_now() || __builtin_mul_overflow(count, bytes, &all) || all + kGuardBytes < all)
        return __libc_calloc(count, bytes);
    void* memory = __libc_calloc(1, all + kGuardBytes);
    note_block(memory, all);
    return memory;
}

TOVU_HEAP_EXPORT void free(void* memory) {
    if (!memory || frees_lent_memory(memory)) return;
    if (the_heap_is_watched.load(std::memory_order_relaxed) && !the_heap_is_in_use && !note_free(memory)) return;
    __libc_free(memory);
}

TOVU_HEAP_EXPORT void* realloc(void* memory, size_t bytes) {
    if (!the_heap_is_watched.load(std::memory_order_relaxed) || the_heap_is_in_use)
        return __libc_realloc(memory, bytes);
    const HeapBlock* block = memory ? noted_live(memory) : nullptr;
    if (memory && !block) return __libc_realloc(memory, bytes);
    void* moved = malloc(bytes);
    if (moved && block) {
        std::memcpy(moved, memory, std::min(bytes, block->bytes));
        free(memory);
    }
    return moved;
}

TOVU_HEAP_EXPORT void* memalign(size_t alignment, size_t bytes) {
    if (!is_noted_now() || bytes + kGuardBytes < bytes) return __libc_memalign(alignment, bytes);
    void* memory = __libc_memalign(alignment, bytes + kGuardBytes);
    fill_and_note(memory, bytes);
    return memory;
}

TOVU_HEAP_EXPORT void* aligned_alloc(size_t alignment, size_t bytes) {
    return memalign(alignment, bytes);
}

TOVU_HEAP_EXPORT int posix_memalign(void** memory, size_t alignment, size_t bytes) {
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
    void* made = memalign(alignment, bytes);
    if (!made) return ENOMEM;
    *memory = made;
    return 0;
}

}  // extern "C"

#endif
