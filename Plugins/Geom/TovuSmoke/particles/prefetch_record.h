// Prefetching of particle records. Each record is an allocation of its own, so a walk in list order reads memory in no
// order that the processor's own prefetcher could follow.
#pragma once

#include "../host/particle_record.h"

namespace tovu {

/// Records between the one that is prefetched and the one that is worked on, in loops over single records: enough to
/// hide the latency of main memory, few enough to stay in the first-level cache.
constexpr int32_t kPrefetchDistance = 12;

/// Prefetches the fields that a step or a quad reads: they span two cache lines.
inline void prefetch_record(const Particle* particle) {
    const char* const bytes = reinterpret_cast<const char*>(particle);
    __builtin_prefetch(bytes);
    __builtin_prefetch(bytes + 64);
}

/// Prefetches the records of an array one by one, from its end to its beginning.
struct RecordPrefetcher {
    Particle* const* first;
    Particle* const* end;  // behind the next record to prefetch

    void next() {
        if (end != first) prefetch_record(*--end);
    }
    void next(int32_t count) {
        for (int32_t i = 0; i < count; ++i) next();
    }
};

}  // namespace tovu
