#include "fenced_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "low_memory.h"

namespace stage {
namespace {

constexpr size_t kFencePages = 16;
constexpr char kPattern = static_cast<char>(0xA5);

size_t page_bytes() {
    static const auto bytes = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

size_t round_up(size_t bytes, size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

/// Maps unreadable pages. Null if there are none left.
char* map_pages(size_t bytes, bool below_4gib) {
    if (!below_4gib) {
        void* pages = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        return pages == MAP_FAILED ? nullptr : static_cast<char*>(pages);
    }
    void* pages = map_low(bytes);
    if (pages) mprotect(pages, bytes, PROT_NONE);
    return static_cast<char*>(pages);
}

/// The bytes in [begin, end) that differ from `before`.
std::optional<FenceDamage> damage_in(const char* begin, const char* end, const char* before, const char* data) {
    const auto bytes = static_cast<size_t>(end - begin);
    if (std::memcmp(begin, before, bytes) == 0) return std::nullopt;
    FenceDamage damage{0, 0};
    for (size_t i = 0; i < bytes; ++i) {
        if (begin[i] == before[i]) continue;
        if (damage.bytes++ == 0) damage.offset = begin + i - data;
    }
    return damage;
}

}  // namespace

FencedMemory::FencedMemory(size_t bytes, const FenceOptions& options) : bytes_(bytes) {
    const size_t fence = kFencePages * page_bytes();
    const size_t room = round_up(options.room_bytes, page_bytes());
    const size_t inner = round_up(std::max<size_t>(bytes, 1), page_bytes());
    pages_bytes_ = 2 * fence + 2 * room + inner;
    pages_ = map_pages(pages_bytes_, options.below_4gib);
    if (!pages_) return;
    open_ = pages_ + fence;
    open_bytes_ = 2 * room + inner;
    mprotect(open_, open_bytes_, PROT_READ | PROT_WRITE);
    std::memset(open_, kPattern, open_bytes_);
    const size_t start =
        options.side == FenceSide::kBefore ? 0 : (inner - bytes) / options.alignment * options.alignment;
    data_ = open_ + room + start;
    before_.assign(open_bytes_ - bytes, kPattern);
}

FencedMemory::FencedMemory(FencedMemory&& other) noexcept {
    *this = std::move(other);
}

FencedMemory& FencedMemory::operator=(FencedMemory&& other) noexcept {
    std::swap(pages_, other.pages_);
    std::swap(pages_bytes_, other.pages_bytes_);
    std::swap(open_, other.open_);
    std::swap(open_bytes_, other.open_bytes_);
    std::swap(data_, other.data_);
    std::swap(bytes_, other.bytes_);
    std::swap(before_, other.before_);
    std::swap(forbidden_, other.forbidden_);
    return *this;
}

FencedMemory::~FencedMemory() {
    if (pages_) munmap(pages_, pages_bytes_);
}

std::optional<FenceDamage> FencedMemory::take_damage() {
    if (!pages_ || forbidden_) return std::nullopt;
    const char* behind = data_ + bytes_;
    const char* end = open_ + open_bytes_;
    const auto bytes_before = static_cast<size_t>(data_ - open_);
    std::optional<FenceDamage> damage = damage_in(open_, data_, before_.data(), data_);
    if (!damage) damage = damage_in(behind, end, before_.data() + bytes_before, data_);
    if (!damage) return std::nullopt;
    std::copy(open_, data_, before_.begin());
    std::copy(behind, end, before_.begin() + static_cast<ptrdiff_t>(bytes_before));
    return damage;
}

void FencedMemory::forbid() {
    if (!pages_) return;
    mprotect(pages_, pages_bytes_, PROT_NONE);
    forbidden_ = true;
}

bool FencedMemory::covers(uintptr_t address) const {
    const auto start = reinterpret_cast<uintptr_t>(pages_);
    return pages_ && address >= start && address - start < pages_bytes_;
}

void FencedMemory::allow(uintptr_t address) const {
    const uintptr_t page = address / page_bytes() * page_bytes();
    mprotect(reinterpret_cast<void*>(page), page_bytes(), PROT_READ | PROT_WRITE);
}

void FencedMemory::close_fences() {
    if (!pages_) return;
    if (forbidden_) return forbid();
    mprotect(pages_, static_cast<size_t>(open_ - pages_), PROT_NONE);
    char* behind = open_ + open_bytes_;
    mprotect(behind, static_cast<size_t>(pages_ + pages_bytes_ - behind), PROT_NONE);
}

}  // namespace stage
