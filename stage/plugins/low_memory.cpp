#include "low_memory.h"

#include <sys/mman.h>

#include <atomic>
#include <utility>

namespace stage {
namespace {

constexpr uint64_t kEnd = uint64_t{1} << 32;
constexpr uint64_t kFirstWanted = 0x10000000;  // above the heap of a program that is loaded at a fixed low address
constexpr uint64_t kStep = 0x10000;            // the largest page size of the supported processors
constexpr uint64_t kMaxTries = (kEnd - kFirstWanted) / kStep;

// The start of the next search, after the last found pages. The first search starts in the upper half, where a plug-in
// that treats the 32 bits as a signed number uses a wrong address.
std::atomic<uint64_t> next_wanted = kEnd / 2;

}  // namespace

// MAP_32BIT does this in one call, but only on x86-64. The kernel maps at the requested address if that range is free,
// else elsewhere.
void* map_low(size_t bytes) {
    if (bytes > kEnd - kFirstWanted) return nullptr;
    uint64_t wanted = next_wanted;
    for (uint64_t tries = 0; tries < kMaxTries; ++tries, wanted += kStep) {
        if (wanted + bytes > kEnd) wanted = kFirstWanted;
        void* pages = mmap(reinterpret_cast<void*>(static_cast<uintptr_t>(wanted)), bytes, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) return nullptr;
        if (reinterpret_cast<uintptr_t>(pages) + uint64_t{bytes} <= kEnd) {
            next_wanted = wanted + (bytes + kStep - 1) / kStep * kStep;
            return pages;
        }
        munmap(pages, bytes);
    }
    return nullptr;
}

LowMemory::LowMemory(size_t bytes) {
    void* pages = map_low(bytes);
    if (pages == nullptr) return;
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
