// What a text slot leads to, looked at without the risk of a crash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace probe {

/// Bytes from `address` on that the process may read (`access` 'r') or write ('w') without a gap, at most `wanted`.
/// From Linux's list of the process's memory; `wanted` where there is none.
size_t accessible_bytes(uintptr_t address, char access, size_t wanted);

/// The bytes up to the NUL are UTF-8: RFC 3629, without overlong forms and surrogates.
bool is_utf8(const std::string& text);

}  // namespace probe
