#include "instance_caches.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace tovu {

InstanceCaches* make_caches() {
    // SIMD types need more alignment than malloc guarantees on some 32-bit platforms.
    constexpr size_t kSlack = alignof(InstanceCaches) - 1;
    void* const memory = std::malloc(sizeof(InstanceCaches) + kSlack);
    if (memory == nullptr) return nullptr;
    const uintptr_t aligned = (reinterpret_cast<uintptr_t>(memory) + kSlack) & ~kSlack;
    auto* const caches = new (reinterpret_cast<void*>(aligned)) InstanceCaches;
    caches->memory = memory;
    return caches;
}

void destroy_caches(InstanceCaches* caches) {
    if (caches == nullptr) return;
    void* const memory = caches->memory;
    caches->~InstanceCaches();
    std::free(memory);
}

}  // namespace tovu
