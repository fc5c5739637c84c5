// A heap array that only grows and frees itself.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <type_traits>
#include <utility>

namespace tovu {

/// Room for `capacity` elements, uninitialised until written. Move-only; the destructor frees the memory. Growing
/// copies the elements as bytes. Never throws: an allocation that fails is reported and leaves the buffer as it was.
template <class Element>
class Buffer {
  public:
    Buffer() = default;
    Buffer(Buffer&& other) noexcept
        : elements_(std::exchange(other.elements_, nullptr)), capacity_(std::exchange(other.capacity_, 0)) {}
    Buffer& operator=(Buffer&& other) noexcept {
        std::swap(elements_, other.elements_);
        std::swap(capacity_, other.capacity_);
        return *this;
    }
    ~Buffer() { std::free(elements_); }

    /// Grows to exactly `count` elements where there is room for fewer. Returns false when there is no memory or the
    /// size cannot be addressed.
    bool reserve(int64_t count) {
        static_assert(std::is_trivially_copyable_v<Element>, "growing copies elements as bytes");
        if (count <= capacity_) return true;
        if (count > INT32_MAX || static_cast<uint64_t>(count) > SIZE_MAX / kElementBytes) return false;
        void* const grown = std::realloc(elements_, static_cast<size_t>(count) * kElementBytes);
        if (grown == nullptr) return false;
        elements_ = static_cast<Element*>(grown);
        capacity_ = static_cast<int32_t>(count);
        return true;
    }

    int32_t capacity() const { return capacity_; }
    Element* data() { return elements_; }  // null while capacity is 0
    const Element* data() const { return elements_; }
    Element& operator[](int32_t index) { return elements_[index]; }
    const Element& operator[](int32_t index) const { return elements_[index]; }

  private:
    static constexpr size_t kElementBytes = sizeof(Element);  // NOLINT(bugprone-sizeof-expression): may be pointers

    Element* elements_ = nullptr;
    int32_t capacity_ = 0;
};

}  // namespace tovu
