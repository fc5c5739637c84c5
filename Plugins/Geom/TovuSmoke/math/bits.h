// Reinterprets the bits of a value as another type. std::bit_cast is missing in the C++20 libraries of some platforms.
#pragma once

#include <cstring>

namespace tovu {

template <class To, class From>
To bit_cast(From from) {
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

}  // namespace tovu
