#include "failing_realloc.h"

#include <cstddef>

bool realloc_fails = false;

// NOLINTBEGIN(readability-identifier-naming): the linker's own
extern "C" void* __real_realloc(void* block, size_t bytes);
// Visible, since the linker binds the calls of shared libraries to it too.
extern "C" __attribute__((visibility("default"))) void* __wrap_realloc(void* block, size_t bytes);
// NOLINTEND(readability-identifier-naming)
extern "C" void* __wrap_realloc(void* block, size_t bytes) {
    return realloc_fails ? nullptr : __real_realloc(block, bytes);
}
