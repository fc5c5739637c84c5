#include "curve_format.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "curve_text.h"

namespace stage {

Result<std::vector<double>> curve_points(const CurveFormat& curve, std::string_view text) {
    constexpr size_t kMinPoints = 2;
    const auto point_size = static_cast<size_t>(curve.components) + 1;
    std::vector<double> numbers;
    for (const std::string_view word : words_of(text)) {
        numbers.emplace_back();
        if (!parse_number(word, numbers.back())) return Error{fmt::format("\"{}\" is not a number", word)};
        if (numbers.back() < curve.range[0] || numbers.back() > curve.range[1])
            return Error{fmt::format("{} is not from {} to {}", word, curve.range[0], curve.range[1])};
    }
    if (numbers.size() % point_size != 0 || numbers.size() < kMinPoints * point_size)
        return Error{fmt::format("it has {} number{}", numbers.size(), numbers.size() == 1 ? "" : "s")};
    for (size_t i = point_size; i < numbers.size(); i += point_size) {
        const double before = numbers[i - point_size];
        if (numbers[i] < before || (numbers[i] == before && !curve.steps))
            return Error{fmt::format("position {} does not come after position {}", numbers[i], before)};
    }
    return numbers;
}

std::string curve_text(const std::vector<double>& numbers) {
    return fmt::format("{}", fmt::join(numbers, " "));
}

}  // namespace stage
