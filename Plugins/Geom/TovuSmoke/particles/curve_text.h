// The texts of the two curves: numbers between spaces, whatever the process's locale.
#pragma once

namespace tovu {

/// Reads the next number of a curve text and moves `text` behind its token. Tokens are separated by runs of the space
/// character alone. A token is read as a decimal number (sign, digits, point, exponent) from its beginning; one that
/// does not begin with a number is 0. Returns false at the end of the text.
bool next_number(const char*& text, float& number);

/// Writes a value of 0 to 1 with six decimals at `out` and returns the position behind it; no NUL is written.
char* write_six_decimals(char* out, double value);

}  // namespace tovu
