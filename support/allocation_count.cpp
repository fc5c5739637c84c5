#include "allocation_count.h"

#if defined(__SANITIZE_ADDRESS__)

long allocation_count() {
    return 0;
}

#else

#include <cstddef>

// glibc's internal names of its allocator. The functions below replace malloc, calloc and realloc in the whole process
// and call these.
// NOLINTBEGIN(readability-identifier-naming): the C library's own
extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);
}
// NOLINTEND(readability-identifier-naming)

namespace {
long count = 0;
}

long allocation_count() {
    return count;
}

extern "C" {
__attribute__((visibility("default"))) void* malloc(size_t bytes) {
    ++count;
    return __libc_malloc(bytes);
}
__attribute__((visibility("default"))) void* calloc(size_t entries, size_t bytes) {
    ++count;
    return __libc_calloc(entries, bytes);
}
__attribute__((visibility("default"))) void* realloc(void* block, size_t bytes) {
    ++count;
    return __libc_realloc(block, bytes);
}
}

#endif
