#include "parameter_values.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <bit>
#include <optional>

#include "stage/names.h"

namespace stage {
namespace {

std::string wanted(const ParameterInfo& parameter) {
    switch (parameter.kind) {
        case ParameterKind::kInt:
            return fmt::format("a whole number from {} to {}", parameter.minimum, parameter.maximum);
        case ParameterKind::kFloat:
            return fmt::format("a number from {} to {}", static_cast<float>(parameter.minimum),
                               static_cast<float>(parameter.maximum));
        case ParameterKind::kBool:
            return "true or false";
        case ParameterKind::kRadio:
            return fmt::format("one of \"{}\"", fmt::join(parameter.choices, "\", \""));
        default:
            return fmt::format("a text of at most {} bytes", parameter.max_length);
    }
}

std::string in_words(const ParameterValue& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        return text->size() > 60 ? fmt::format("a text of {} bytes", text->size()) : '"' + *text + '"';
    return std::visit(
        [](const auto& plain) {
            if constexpr (std::is_same_v<decltype(plain), const std::string&>)
                return plain;
            else
                return fmt::format("{}", plain);
        },
        value);
}

Error refusal(const ParameterInfo& parameter, const std::string& given) {
    return {fmt::format("parameter '{}' takes {}, not {}", parameter.name, wanted(parameter), given)};
}

std::optional<uint32_t> encode_float(const ParameterInfo& parameter, const ParameterValue& value) {
    const auto* whole = std::get_if<int>(&value);
    const auto* decimal = std::get_if<double>(&value);
    if (!whole && !decimal) return std::nullopt;
    const auto number = static_cast<float>(whole ? *whole : *decimal);
    if (!(number >= static_cast<float>(parameter.minimum) && number <= static_cast<float>(parameter.maximum)))
        return std::nullopt;
    return std::bit_cast<uint32_t>(number);
}

std::optional<uint32_t> encode_choice(const ParameterInfo& parameter, const ParameterValue& value) {
    const auto count = static_cast<int>(parameter.choices.size());
    if (const auto* position = std::get_if<int>(&value)) {
        if (*position < 0 || *position >= count) return std::nullopt;
        return static_cast<uint32_t>(*position);
    }
    const auto* text = std::get_if<std::string>(&value);
    const auto found =
        text ? std::find(parameter.choices.begin(), parameter.choices.end(), *text) : parameter.choices.end();
    if (found == parameter.choices.end()) return std::nullopt;
    return static_cast<uint32_t>(found - parameter.choices.begin());
}

std::optional<uint32_t> encode_number(const ParameterInfo& parameter, const ParameterValue& value) {
    switch (parameter.kind) {
        case ParameterKind::kInt: {
            const auto* number = std::get_if<int>(&value);
            if (!number || *number < parameter.minimum || *number > parameter.maximum) return std::nullopt;
            return static_cast<uint32_t>(*number);
        }
        case ParameterKind::kFloat:
            return encode_float(parameter, value);
        case ParameterKind::kBool: {
            const auto* on = std::get_if<bool>(&value);
            if (!on) return std::nullopt;
            return *on ? 1u : 0u;
        }
        default:
            return encode_choice(parameter, value);
    }
}

bool is_text_kind(ParameterKind kind) {
    return kind == ParameterKind::kString || kind == ParameterKind::kContainer || kind == ParameterKind::kImage;
}

}  // namespace

Result<SlotValue> encode_value(const ParameterInfo& parameter, const ParameterValue& value) {
    if (is_text_kind(parameter.kind)) {
        const auto* text = std::get_if<std::string>(&value);
        if (!text || text->size() > static_cast<size_t>(parameter.max_length))
            return refusal(parameter, in_words(value));
        if (text->find('\0') != std::string::npos) return refusal(parameter, "one with a NUL character in it");
        return SlotValue{0, *text};
    }
    const std::optional<uint32_t> bits = encode_number(parameter, value);
    if (!bits) return refusal(parameter, in_words(value));
    return SlotValue{*bits, ""};
}

Result<Done> check_parameter(const ParameterInfo& parameter, const ParameterValue& value) {
    const auto encoded = encode_value(parameter, value);
    if (!encoded) return encoded.error();
    return Done{};
}

Error unknown_parameter(const Plugin& owner, std::string_view name) {
    std::vector<std::string> known;
    for (const ParameterInfo& parameter : owner.parameters) known.push_back(parameter.name);
    return {fmt::format("parameter '{}' is not known to {}: {}", name, owner.name, name_hint(name, known))};
}

Error unknown_button(const Plugin& owner, std::string_view name) {
    std::vector<std::string> known;
    for (const PushButton& button : owner.buttons) known.push_back(button.name);
    return {fmt::format("{} has no push button '{}': {}", owner.name, name, name_hint(name, known))};
}

}  // namespace stage
