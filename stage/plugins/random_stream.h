// Streams of random numbers for `rand`. The Stage exports `rand` and `srand`. If the process binds them to another
// library, the streams are states of the C library's generator.
#pragma once

#include <cstdint>
#include <string_view>

#include "stage/stage_export.h"

namespace stage {

/// State of the additive feedback generator r[i] = r[i - 3] + r[i - 31] mod 2^32 (Knuth, The Art of Computer
/// Programming, volume 2, 3.2.2), which is also glibc's default. If `rand` is that of the C library, these 128 bytes
/// hold a state of its generator instead. Must not move while it is in use.
struct RandomStream {
    static constexpr uint32_t kLength = 31;
    uint32_t values[kLength] = {};  // the last 31, oldest first
    uint32_t drawn = kLength;       // number of used `values`; at 31 the next 31 replace them
};

/// Seeds a stream with FNV-1a (Fowler, Noll, Vo) over the four bytes of the scene's seed, lowest first, and the name,
/// so that another smoke in the scene does not change the numbers of this one. The current stream is not affected.
void seed_stream(RandomStream& stream, uint32_t scene_seed, std::string_view container_name);

/// The stream that `rand` draws from in this thread. Null outside all instances: the thread's own stream.
/// initial-exec: the address is an offset from the thread pointer, without a call.
[[gnu::tls_model("initial-exec")]] STAGE_EXPORT extern constinit thread_local RandomStream* stream_in_force;

/// False if the process binds `rand` to another library.
STAGE_EXPORT extern const bool kRandIsOurs;

/// Makes the C library's generator draw from `next` instead of `previous`. Null means the process's own state.
STAGE_EXPORT void switch_library_state(RandomStream* previous, RandomStream* next);

inline void put_in_force(RandomStream* stream) {
    if (!kRandIsOurs) switch_library_state(stream_in_force, stream);
    stream_in_force = stream;
}

/// While the object exists, `rand` draws from `stream` in this thread; null: from the thread's own stream. Can be
/// nested.
class DrawFrom {
  public:
    explicit DrawFrom(RandomStream* stream) : previous_(stream_in_force) { put_in_force(stream); }
    ~DrawFrom() { put_in_force(previous_); }
    DrawFrom(const DrawFrom&) = delete;
    DrawFrom& operator=(const DrawFrom&) = delete;

  private:
    RandomStream* previous_;
};

}  // namespace stage
