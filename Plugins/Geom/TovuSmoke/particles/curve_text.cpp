#include "curve_text.h"

#include <cmath>
#include <cstdint>

namespace tovu {
namespace {

// Not strtof, whose decimal point depends on the process's locale and which also accepts hexadecimal numbers, infinity
// and NaN.

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// The number digits × 10^exponent. Nineteen digits are kept, more than the precision of a double.
struct Decimal {
    uint64_t digits = 0;
    int32_t exponent = 0;
    int32_t kept = 0;
    bool any = false;
};

constexpr int32_t kKeptDigits = 19;
constexpr int32_t kExponentLimit = 100000;  // beyond every double; sums of two stay within int32

void take_digit(Decimal& decimal, char c, bool behind_point) {
    decimal.any = true;
    const bool keep = decimal.kept < kKeptDigits;
    if (keep) {
        decimal.digits = decimal.digits * 10 + static_cast<uint64_t>(c - '0');
        if (decimal.digits != 0) ++decimal.kept;
    }
    if (keep == behind_point && decimal.exponent > -kExponentLimit && decimal.exponent < kExponentLimit)
        decimal.exponent += keep ? -1 : 1;
}

// An exponent without digits is ignored: "2e" is 2.
int32_t read_exponent(const char* s) {
    if (*s != 'e' && *s != 'E') return 0;
    ++s;
    const bool negative = *s == '-';
    if (*s == '-' || *s == '+') ++s;
    int32_t exponent = 0;
    for (; is_digit(*s); ++s)
        if (exponent < kExponentLimit) exponent = exponent * 10 + (*s - '0');
    return negative ? -exponent : exponent;
}

double power_of_ten(int32_t exponent) {
    double power = 1.0;
    for (double square = 10.0; exponent != 0; exponent >>= 1, square *= square)
        if (exponent & 1) power *= square;
    return power;
}

double value_of(const Decimal& decimal) {
    double value = static_cast<double>(decimal.digits);
    if (decimal.digits == 0) return 0.0;
    int32_t exponent = decimal.exponent;
    if (exponent > 400) return HUGE_VAL;
    if (exponent < -400) return 0.0;
    // Divides in steps of 10^100: 10^-350 alone would be 0, but 19 digits × 10^-350 need not be.
    for (; exponent < -300; exponent += 100) value /= 1e100;
    return exponent < 0 ? value / power_of_ten(-exponent) : value * power_of_ten(exponent);
}

double decimal_at(const char* s) {
    const bool negative = *s == '-';
    if (*s == '-' || *s == '+') ++s;
    Decimal decimal;
    for (; is_digit(*s); ++s) take_digit(decimal, *s, false);
    if (*s == '.')
        for (++s; is_digit(*s); ++s) take_digit(decimal, *s, true);
    if (!decimal.any) return 0.0;
    decimal.exponent += read_exponent(s);
    return negative ? -value_of(decimal) : value_of(decimal);
}

}  // namespace

bool next_number(const char*& text, float& number) {
    while (*text == ' ') ++text;
    if (*text == '\0') return false;
    number = static_cast<float>(decimal_at(text));
    while (*text != ' ' && *text != '\0') ++text;
    return true;
}

char* write_six_decimals(char* out, double value) {
    auto millionths = static_cast<uint32_t>(std::nearbyint(value * 1e6));
    *out++ = static_cast<char>('0' + millionths / 1000000);
    *out++ = '.';
    for (uint32_t unit = 100000; unit != 0; unit /= 10) *out++ = static_cast<char>('0' + millionths / unit % 10);
    return out;
}

}  // namespace tovu
