// Records are fetched ahead of their use, since in the order of a list they lie all over memory.
#pragma once

#include "../host/particle_record.h"

namespace tovu {

/// How many records ahead, where they are worked on one by one: far enough to hide a trip to memory, near enough to
/// stay cached.
constexpr int32_t kFetchAhead = 12;

/// Asks for what a step or a quad needs of a record that is used soon: it lies in two cache lines.
inline void fetch_ahead(const Particle* particle) {
    const char* const bytes = reinterpret_cast<const char*>(particle);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + 64);
}

}  // namespace tovu
