// The memory layout of instances.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stage {

/// The position of data between unreadable pages: directly before those behind it, or directly behind those before it.
enum class FenceSide { kBehind, kBefore };

struct MemoryOptions {
    /// Each block and text lies between unreadable pages, instead of having guard bytes behind it. The fields below,
    /// except `fill`, apply only then.
    bool fenced = false;
    FenceSide side = FenceSide::kBehind;
    size_t room_bytes = 0;  // readable bytes on either side; writes to them become complaints
    /// Each change of a text moves it and makes its old place unreadable. Buffers of names of containers and images
    /// have exactly the size of the name.
    bool texts_move = false;
    uint8_t fill = 0;  // the bytes of a block before its slots are filled
};

}  // namespace stage
