// How the memory of instances is laid out.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stage {

/// Where bytes lie within pages of their own: directly before the unreadable pages behind them, or directly behind
/// those before them.
enum class FenceSide { kBehind, kBefore };

struct MemoryOptions {
    /// Blocks and texts lie between unreadable pages of their own, instead of close together with guard bytes behind.
    /// The fields below but `fill` count only then.
    bool fenced = false;
    FenceSide side = FenceSide::kBehind;
    size_t room_bytes = 0;  // readable bytes on either side; what is written there becomes a complaint
    /// Each change of a text moves it and makes its old place unreadable. Names of containers and images then have not
    /// a byte more than they need.
    bool texts_move = false;
    uint8_t fill = 0;  // the bytes of a block before its slots are filled
};

}  // namespace stage
