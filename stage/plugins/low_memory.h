// Memory whose addresses fit into 32 bits, for the texts behind parameter slots.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stage/stage_export.h"

namespace stage {

/// Zeroed pages below 4 GiB, which the caller unmaps. Null if none are left.
void* map_low(size_t bytes);

/// Zeroed pages below 4 GiB; the destructor frees them. Move only.
class STAGE_EXPORT LowMemory {
  public:
    LowMemory() = default;
    /// data() is null if the system has no such pages left.
    explicit LowMemory(size_t bytes);
    LowMemory(LowMemory&& other) noexcept;
    LowMemory& operator=(LowMemory&& other) noexcept;
    ~LowMemory();

    char* data() const { return data_; }
    size_t size() const { return bytes_; }

  private:
    char* data_ = nullptr;
    size_t bytes_ = 0;
};

}  // namespace stage
