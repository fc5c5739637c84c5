#include "random_stream.h"

#include <cstdlib>

namespace stage {

void seed_stream(RandomStream& stream, uint32_t scene_seed, std::string_view container_name) {
    uint32_t hash = 2166136261u;
    const auto add = [&hash](uint32_t byte) { hash = (hash ^ byte) * 16777619u; };
    for (int shift = 0; shift < 32; shift += 8) add(scene_seed >> shift & 0xFF);
    for (const char character : container_name) add(static_cast<unsigned char>(character));
    leave_stream(initstate(hash, stream.state, sizeof stream.state));
}

char* enter_stream(RandomStream& stream) {
    return setstate(stream.state);
}

void leave_stream(char* previous) {
    setstate(previous);
}

}  // namespace stage
