// The text of a curve: numbers between spaces.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace stage {

/// The parts between single or several spaces.
std::vector<std::string_view> words_of(std::string_view text);

/// The whole word as a finite decimal number, with an optional sign; false for anything else.
bool parse_number(std::string_view word, double& number);

/// All numbers of a curve; none when a word is no number.
std::optional<std::vector<double>> curve_numbers(std::string_view text);

}  // namespace stage
