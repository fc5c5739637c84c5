// Values as text in recorded calls. Reading a written text gives the same bits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "stage/stage_export.h"

namespace stage {

/// The shortest text that reads back as the same number. "nan:" and the bits in hexadecimal for a NaN.
STAGE_EXPORT std::string value_text(float value);
STAGE_EXPORT std::string value_text(double value);
template <class Integer>
std::string value_text(Integer value) {
    return std::to_string(value);
}

/// The text in double quotes. Quotes and backslashes get a backslash; control characters become \x and two digits.
std::string quoted(std::string_view text);

/// Reads a value. False, with `value` unchanged, if `text` is not such a value.
STAGE_EXPORT bool read_value_text(std::string_view text, float& value);
STAGE_EXPORT bool read_value_text(std::string_view text, double& value);
bool read_value_text(std::string_view text, int32_t& value);
bool read_value_text(std::string_view text, int64_t& value);
bool read_value_text(std::string_view text, uint32_t& value);
bool read_value_text(std::string_view text, uint8_t& value);

/// Removes a quoted text from the start of `rest`. False, with `rest` unchanged, if there is none.
bool take_quoted(std::string_view& rest, std::string& text);

}  // namespace stage
