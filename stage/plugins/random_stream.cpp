#include "random_stream.h"

#include <cstdlib>

namespace stage {
namespace {

static_assert(RAND_MAX == 2147483647);
static_assert(sizeof(RandomStream) == 128, "a state of the C library's default degree");

/// Replaces the last 31 values by the next 31. Each is a sum with the one three before it, so that there are three
/// chains of sums, which are kept in registers.
constexpr void advance(RandomStream& stream) {
    uint32_t* values = stream.values;
    uint32_t first = values[28], second = values[29], third = values[30];
    for (uint32_t i = 0; i < 30; i += 3) {
        values[i] = first += values[i];
        values[i + 1] = second += values[i + 1];
        values[i + 2] = third += values[i + 2];
    }
    values[30] += first;
    stream.drawn = 0;
}

/// Initial values from the minimal standard generator (Park and Miller, 1988), 0 taken as seed 1; the feedback's first
/// 310 values are passed over. The first new value is r[34], made of r[3] and r[31], a copy of r[0]: r[3] comes first.
constexpr RandomStream seeded(uint32_t seed) {
    RandomStream stream;
    int64_t value = static_cast<int32_t>(seed == 0 ? 1 : seed);
    for (uint32_t i = 0; i < RandomStream::kLength; ++i) {
        stream.values[(i + 28) % RandomStream::kLength] = static_cast<uint32_t>(value);
        value = 16807 * value % 2147483647;
        if (value < 0) value += 2147483647;
    }
    for (int i = 0; i < 10; ++i) advance(stream);
    stream.drawn = RandomStream::kLength;
    return stream;
}

[[gnu::tls_model("initial-exec")]] constinit thread_local RandomStream own_numbers = seeded(1);

RandomStream& current_stream() {
    return stream_in_force ? *stream_in_force : own_numbers;
}

char* library_state(RandomStream& stream) {
    return reinterpret_cast<char*>(&stream);
}

}  // namespace

extern "C" {

// The functions behind the exported `rand` and `srand`. These names cannot be bound to another library.
int stage_rand() noexcept {
    RandomStream& stream = current_stream();
    if (stream.drawn == RandomStream::kLength) advance(stream);
    return static_cast<int>(stream.values[stream.drawn++] >> 1);
}

void stage_srand(unsigned int seed) noexcept {
    current_stream() = seeded(seed);
}

}  // extern "C"

constinit thread_local RandomStream* stream_in_force = nullptr;

// Volatile, since compilers assume that functions with different names have different addresses.
int (*const volatile kAddressOfOurs)() noexcept = stage_rand;
const bool kRandIsOurs = &::rand == kAddressOfOurs;

void seed_stream(RandomStream& stream, uint32_t scene_seed, std::string_view container_name) {
    uint32_t hash = 2166136261u;
    const auto add = [&hash](uint32_t byte) { hash = (hash ^ byte) * 16777619u; };
    for (int shift = 0; shift < 32; shift += 8) add(scene_seed >> shift & 0xFF);
    for (const char character : container_name) add(static_cast<unsigned char>(character));
    if (kRandIsOurs)
        stream = seeded(hash);
    else
        setstate(initstate(hash, library_state(stream), sizeof stream));
}

void switch_library_state(RandomStream* previous, RandomStream* next) {
    static char* process_state = nullptr;  // the saved state of the process while a stream is in use
    if (previous == next) return;
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): a null `next` follows a stream, which set process_state
    char* left = setstate(next ? library_state(*next) : process_state);
    if (!previous) process_state = left;
}

}  // namespace stage

extern "C" {
STAGE_EXPORT int rand() noexcept __attribute__((alias("stage_rand")));
STAGE_EXPORT void srand(unsigned int seed) noexcept __attribute__((alias("stage_srand")));
}
