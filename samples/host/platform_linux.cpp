#include <dlfcn.h>
#include <sys/mman.h>

#include <cstdint>

#include "platform.h"

void* open_library(const char* path, std::string& error) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);  // RTLD_NOW: a missing service is reported here
    if (library == nullptr) error = dlerror();
    return library;
}

void close_library(void* library) {
    dlclose(library);
}

void* exported_function(void* library, const char* name) {
    return dlsym(library, name);
}

// The system maps at the requested address if it is free, else elsewhere.
void* memory_below_4_gib(size_t bytes) {
    for (uintptr_t wanted = 0x10000000; wanted < 0xF0000000; wanted += 0x100000) {
        void* memory =
            mmap(reinterpret_cast<void*>(wanted), bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) break;
        const auto address = reinterpret_cast<uintptr_t>(memory);
        if (address == static_cast<uint32_t>(address)) return memory;
        munmap(memory, bytes);
    }
    return nullptr;
}
