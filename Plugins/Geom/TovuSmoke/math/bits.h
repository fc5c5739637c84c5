// The bits of a value as another type. Not std::bit_cast, which C++20 libraries of some platforms came without.
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
