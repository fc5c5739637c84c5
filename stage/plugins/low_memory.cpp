#include "low_memory.h"

#include <sys/mman.h>

#include <utility>

namespace stage {

LowMemory::LowMemory(size_t bytes) {
    int flags = MAP_PRIVATE | MAP_ANONYMOUS;
#ifdef MAP_32BIT
    flags |= MAP_32BIT;  // the first 2 GiB; where it is missing, pointers have 32 bits or the check below decides
#endif
    void* pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, flags, -1, 0);
    if (pages == MAP_FAILED) return;
    if (static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pages)) + bytes > uint64_t{1} << 32) {
        munmap(pages, bytes);
        return;
    }
    data_ = static_cast<char*>(pages);
    bytes_ = bytes;
}

LowMemory::LowMemory(LowMemory&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), bytes_(std::exchange(other.bytes_, 0)) {}

LowMemory& LowMemory::operator=(LowMemory&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(bytes_, other.bytes_);
    return *this;
}

LowMemory::~LowMemory() {
    if (data_) munmap(data_, bytes_);
}

}  // namespace stage
