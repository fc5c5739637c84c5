#include <windows.h>

#include <cstdint>
#include <cstdlib>

#include "platform.h"

void* open_library(const char* path, std::string& error) {
    const HMODULE library = LoadLibraryA(path);
    if (library == nullptr) error = std::string(path) + ": error " + std::to_string(GetLastError());
    return reinterpret_cast<void*>(library);
}

void close_library(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

void* exported_function(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

// The system returns null if the requested address is not free.
void* memory_below_4_gib(size_t bytes) {
    void* memory = nullptr;
    for (uintptr_t wanted = 0x10000000; wanted < 0xF0000000 && memory == nullptr; wanted += 0x100000)
        memory = VirtualAlloc(reinterpret_cast<void*>(wanted), bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    return memory;
}

// A host's own `rand`, which plug-ins find because this program exports it. It gives the upper 15 bits of the numbers
// of glibc, so that the smoke is the same as on Linux: Knuth's additive generator (The Art of Computer Programming,
// volume 2, 3.2.2), x[n] = x[n - 3] + x[n - 31], whose initial values are from the minimal standard generator of Park
// and Miller (1988). One stream for the process: all plug-ins are called from one thread.
namespace {
uint32_t values[31];
size_t newest = 0;

uint32_t next_value() {
    newest = (newest + 1) % 31;
    return values[newest] += values[(newest + 28) % 31];
}
}  // namespace

extern "C" void srand(unsigned seed) {
    int64_t value = static_cast<int32_t>(seed == 0 ? 1 : seed);
    for (uint32_t& initial : values) {
        initial = static_cast<uint32_t>(value);
        value = 16807 * value % 2147483647;
        if (value < 0) value += 2147483647;
    }
    newest = 2;  // the first number is the sum of x[3] and x[0]
    for (int i = 0; i < 310; ++i) next_value();
}

extern "C" int rand() {
    return static_cast<int>(next_value() >> 17);
}
