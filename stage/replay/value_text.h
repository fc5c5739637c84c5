// Values as the text of recorded calls. What is written reads back as the same bits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "stage/stage_export.h"

namespace stage {

/// The shortest digits that read back as the same number; "nan:" and the bits in hexadecimal for what is no number.
STAGE_EXPORT std::string value_text(float value);
STAGE_EXPORT std::string value_text(double value);
template <class Integer>
std::string value_text(Integer value) {
    return std::to_string(value);
}

/// In double quotes, with a backslash before quotes and backslashes, and \x and two digits for control characters.
std::string quoted(std::string_view text);

/// False when `text` is no such value; `value` is then unchanged.
STAGE_EXPORT bool read_value_text(std::string_view text, float& value);
STAGE_EXPORT bool read_value_text(std::string_view text, double& value);
bool read_value_text(std::string_view text, int32_t& value);
bool read_value_text(std::string_view text, int64_t& value);
bool read_value_text(std::string_view text, uint32_t& value);
bool read_value_text(std::string_view text, uint8_t& value);

/// Takes a quoted text from the front of `rest`; false, with `rest` unchanged, when there is none.
bool take_quoted(std::string_view& rest, std::string& text);

}  // namespace stage
