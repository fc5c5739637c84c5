#include "parameter_condition.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace stage {

namespace {

std::string in_words(const ParameterValue& value) {
    if (const auto* on = std::get_if<bool>(&value)) return *on ? "on" : "off";
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    const auto* whole = std::get_if<int>(&value);
    return fmt::format("{:.6g}", whole != nullptr ? *whole : std::get<double>(value));
}

std::string in_words(const ValueTest& test, const Plugin& plugin) {
    if (test.set) {
        const bool text = std::holds_alternative<std::string>(find_parameter(plugin, test.parameter)->initial);
        return fmt::format("{} is not {}", test.parameter, text ? "empty" : "0");
    }
    std::vector<std::string> values;
    for (const ParameterValue& value : test.values) values.push_back(in_words(value));
    return fmt::format("{} is {}", test.parameter, fmt::join(values, " or "));
}

std::string in_words(const Condition& condition, const Plugin& plugin) {
    std::vector<std::string> words;
    for (const ValueTest& test : condition.tests) words.push_back(in_words(test, plugin));
    if (condition.attached) words.emplace_back("another plug-in works on the particles");
    return fmt::format("{}", fmt::join(words, " and "));
}

}  // namespace

std::string to_string(const Conditions& conditions, const Plugin& plugin) {
    std::vector<std::string> words;
    for (const Condition& condition : conditions) words.push_back(in_words(condition, plugin));
    return fmt::format("{}", fmt::join(words, "; or "));
}

}  // namespace stage
