// Memory between unreadable pages, which detect accesses outside its bounds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "stage/scene/memory_options.h"
#include "stage/stage_export.h"

namespace stage {

struct FenceOptions {
    FenceSide side = FenceSide::kBehind;
    size_t alignment = 8;   // a power of 2, at most a page
    size_t room_bytes = 0;  // readable bytes on either side, rounded up to pages
    bool below_4gib = false;
};

/// Bytes next to the memory that were overwritten.
struct FenceDamage {
    ptrdiff_t offset;  // of the first byte, from the start of the memory: below 0 or at least its size
    size_t bytes;      // number of changed bytes
};

/// All readable bytes around the memory hold a pattern. Move only.
class STAGE_EXPORT FencedMemory {
  public:
    FencedMemory() = default;
    /// data() is null if the system has no such pages left.
    FencedMemory(size_t bytes, const FenceOptions& options);
    FencedMemory(FencedMemory&& other) noexcept;
    FencedMemory& operator=(FencedMemory&& other) noexcept;
    ~FencedMemory();

    char* data() const { return data_; }
    size_t size() const { return bytes_; }

    /// The first damage since the last call, if any. Written bytes stay and are not reported again.
    std::optional<FenceDamage> take_damage();

    /// Makes all of it unreadable.
    void forbid();
    bool is_open() const { return !forbidden_; }

    /// True if the address lies in one of the pages, unreadable ones included. Async-signal-safe.
    bool covers(uintptr_t address) const;
    /// Makes the page at this address, which covers() it, readable and writable. Async-signal-safe.
    void allow(uintptr_t address) const;
    /// Makes the pages before and behind unreadable again, after allow().
    void close_fences();

  private:
    char* pages_ = nullptr;  // the whole mapping
    size_t pages_bytes_ = 0;
    char* open_ = nullptr;  // the readable part
    size_t open_bytes_ = 0;
    char* data_ = nullptr;
    size_t bytes_ = 0;
    std::vector<char> before_;  // the readable bytes around the memory at the last call
    bool forbidden_ = false;
};

}  // namespace stage
