// A stream of random numbers for each instance, behind the C library's `rand`.
#pragma once

#include <cstdint>
#include <string_view>

namespace stage {

/// State of the C library's generator; 128 bytes are its default degree. Must stay where it is while it is in use.
struct RandomStream {
    alignas(8) char state[128];
};

/// Seeds a stream with FNV-1a (Fowler, Noll, Vo) over the four bytes of the scene's seed, lowest first, and the name:
/// another smoke in the scene changes nothing for this one. `rand` goes on where it was.
void seed_stream(RandomStream& stream, uint32_t scene_seed, std::string_view container_name);

/// Makes `rand` draw from the stream; returns the state it drew from before, for leave_stream.
char* enter_stream(RandomStream& stream);
void leave_stream(char* previous);

}  // namespace stage
