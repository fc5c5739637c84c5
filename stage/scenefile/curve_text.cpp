#include "curve_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace stage {

std::vector<std::string_view> words_of(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        if (end > 0) words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

bool parse_number(std::string_view word, double& number) {
    if (word.starts_with('+')) word.remove_prefix(1);
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && end == word.data() + word.size() && std::isfinite(number);
}

std::optional<std::vector<double>> curve_numbers(std::string_view text) {
    std::vector<double> numbers;
    for (const std::string_view word : words_of(text)) {
        numbers.emplace_back();
        if (!parse_number(word, numbers.back())) return std::nullopt;
    }
    return numbers;
}

}  // namespace stage
