// Reading and writing the texts of the two curves: numbers separated by spaces, independent of the process's locale.
#pragma once

namespace tovu {

/// Reads the next number and moves `text` past its token. Only spaces separate tokens. The longest decimal number
/// (sign, digits, point, exponent) at the start of the token is its value; without one the value is 0. Returns false at
/// the end of the text.
bool next_number(const char*& text, float& number);

/// Writes a value of 0 to 1 with six decimals at `out`, without a NUL. Returns the end of the written text.
char* write_six_decimals(char* out, double value);

}  // namespace tovu
