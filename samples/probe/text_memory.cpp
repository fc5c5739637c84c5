#include "text_memory.h"

#include <cstddef>

namespace probe {

bool is_utf8(const std::string& text) {
    for (size_t i = 0; i < text.size();) {
        const auto byte = [&](size_t k) { return i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0u; };
        const unsigned lead = byte(0);
        const size_t length = lead < 0x80   ? 1
                              : lead < 0xc2 ? 0
                              : lead < 0xe0 ? 2
                              : lead < 0xf0 ? 3
                              : lead < 0xf5 ? 4
                                            : 0;
        if (length == 0) return false;
        unsigned code = length == 1 ? lead : lead & (0x7fu >> length);
        for (size_t k = 1; k < length; ++k) {
            if ((byte(k) & 0xc0) != 0x80) return false;
            code = code << 6 | (byte(k) & 0x3f);
        }
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        if (overlong || code > 0x10ffff || (code >= 0xd800 && code < 0xe000)) return false;
        i += length;
    }
    return true;
}

}  // namespace probe
