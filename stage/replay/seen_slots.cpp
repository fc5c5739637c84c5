#include "seen_slots.h"

#include <bit>

#include "stage/plugins/instance_memory.h"
#include "value_text.h"

namespace stage {
namespace {

bool is_text(const ParameterInfo& parameter) {
    return parameter.max_length > 0;
}

std::string slot_text(const Instance& instance, const ParameterInfo& parameter) {
    if (is_text(parameter)) {
        const Result<ParameterValue> value = read_value(instance, parameter);
        return value ? quoted(std::get<std::string>(*value)) : "elsewhere";
    }
    const uint32_t bits = read_slot(instance, parameter.index);
    return parameter.kind == ParameterKind::kFloat ? value_text(std::bit_cast<float>(bits))
                                                   : value_text(static_cast<int32_t>(bits));
}

}  // namespace

std::vector<std::string> take_changed_slots(SeenSlots& seen, const Instance& instance) {
    const std::vector<ParameterInfo>& parameters = plugin(instance.plugin).parameters;
    const bool is_first = seen.bits.size() != parameters.size();
    seen.bits.resize(parameters.size());
    seen.texts.resize(parameters.size());
    std::vector<std::string> changed;
    for (size_t i = 0; i < parameters.size(); ++i) {
        const uint32_t bits = read_slot(instance, parameters[i].index);
        const char* text = is_text(parameters[i]) ? instance.text_buffers[i] : "";
        if (!is_first && bits == seen.bits[i] && text == seen.texts[i]) continue;
        seen.bits[i] = bits;
        seen.texts[i] = text;
        changed.push_back(parameters[i].name + ' ' + slot_text(instance, parameters[i]));
    }
    return changed;
}

bool set_slot(Instance& instance, std::string_view name_and_value) {
    const size_t space = name_and_value.find(' ');
    const ParameterInfo* parameter = find_parameter(plugin(instance.plugin), name_and_value.substr(0, space));
    if (!parameter || space == std::string_view::npos) return false;
    std::string_view value = name_and_value.substr(space + 1);
    SlotValue slot;
    float number = 0;
    int32_t whole = 0;
    if (is_text(*parameter)) {
        if (!take_quoted(value, slot.text) || !value.empty() ||
            slot.text.size() > static_cast<size_t>(parameter->max_length))
            return false;
    } else if (parameter->kind == ParameterKind::kFloat) {
        if (!read_value_text(value, number)) return false;
        slot.bits = std::bit_cast<uint32_t>(number);
    } else {
        if (!read_value_text(value, whole)) return false;
        slot.bits = static_cast<uint32_t>(whole);
    }
    write_value(instance, *parameter, slot);
    return true;
}

}  // namespace stage
