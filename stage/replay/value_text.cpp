#include "value_text.h"

#include <fmt/format.h>

#include <bit>
#include <charconv>
#include <cmath>

namespace stage {
namespace {

constexpr std::string_view kNan = "nan:";

template <class Bits, class Number>
std::string number_text(Number value) {
    if (std::isnan(value)) return fmt::format("{}{:x}", kNan, std::bit_cast<Bits>(value));
    return fmt::format("{}", value);
}

/// how: the base of an integer, or nothing.
template <class Number, class... How>
bool read_digits(std::string_view text, Number& value, How... how) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, how...);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    value = number;
    return true;
}

template <class Bits, class Number>
bool read_number(std::string_view text, Number& value) {
    if (text.starts_with(kNan)) {
        Bits bits = 0;
        if (!read_digits(text.substr(kNan.size()), bits, 16) || !std::isnan(std::bit_cast<Number>(bits))) return false;
        value = std::bit_cast<Number>(bits);
        return true;
    }
    return read_digits(text, value);
}

}  // namespace

std::string value_text(float value) {
    return number_text<uint32_t>(value);
}

std::string value_text(double value) {
    return number_text<uint64_t>(value);
}

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (const char character : text) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
            out += fmt::format("\\x{:02x}", character);
            continue;
        }
        if (character == '"' || character == '\\') out += '\\';
        out += character;
    }
    return out + '"';
}

bool read_value_text(std::string_view text, float& value) {
    return read_number<uint32_t>(text, value);
}

bool read_value_text(std::string_view text, double& value) {
    return read_number<uint64_t>(text, value);
}

bool read_value_text(std::string_view text, int32_t& value) {
    return read_digits(text, value);
}

bool read_value_text(std::string_view text, int64_t& value) {
    return read_digits(text, value);
}

bool read_value_text(std::string_view text, uint32_t& value) {
    return read_digits(text, value);
}

bool read_value_text(std::string_view text, uint8_t& value) {
    return read_digits(text, value);
}

bool take_quoted(std::string_view& rest, std::string& text) {
    if (!rest.starts_with('"')) return false;
    std::string out;
    for (size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == '"') {
            text = std::move(out);
            rest.remove_prefix(i + 1);
            return true;
        }
        if (rest[i] == '\\' && rest.substr(i + 1).starts_with('x')) {
            uint8_t byte = 0;
            if (!read_digits(rest.substr(i + 2, 2), byte, 16)) return false;
            out += static_cast<char>(byte);
            i += 3;
        } else {
            if (rest[i] == '\\') ++i;
            if (i < rest.size()) out += rest[i];
        }
    }
    return false;
}

}  // namespace stage
