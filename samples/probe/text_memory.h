// Texts of slots.
#pragma once

#include <string>

namespace probe {

/// The bytes up to the NUL are UTF-8: RFC 3629, without overlong forms and surrogates.
bool is_utf8(const std::string& text);

}  // namespace probe
