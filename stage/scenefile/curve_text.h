// The text of a curve: numbers separated by spaces.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace stage {

/// Splits the text at one or more spaces.
std::vector<std::string_view> words_of(std::string_view text);

/// Reads the whole word as a finite decimal number with an optional sign. False for any other word.
bool parse_number(std::string_view word, double& number);

/// All numbers of a curve; empty optional if a word is not a number.
std::optional<std::vector<double>> curve_numbers(std::string_view text);

}  // namespace stage
