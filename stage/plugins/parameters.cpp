#include "parameters.h"

#include <fmt/format.h>

#include "entry_point_call.h"
#include "instance_memory.h"
#include "parameter_values.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

/// An instance, its container's name for messages, and one of its parameters.
struct Target {
    Instance* instance;
    std::string container;
    const ParameterInfo* parameter;
};

Error in_container(const std::string& container, const Error& error) {
    return {fmt::format("container '{}': {}", container, error.message)};
}

Result<Target> find_instance(Stage& stage, int32_t container_handle) {
    const Container* container = find_container(stage, container_handle);
    if (!container) return Error{fmt::format("{} is not the handle of a container", container_handle)};
    Instance* instance = instance_of(stage, container_handle);
    if (!instance) return in_container(container->name, {"carries no plug-in"});
    return Target{instance, container->name, nullptr};
}

Result<Target> find_target(Stage& stage, int32_t container_handle, std::string_view name) {
    Result<Target> target = find_instance(stage, container_handle);
    if (!target) return target;
    const Plugin& owner = plugin(target->instance->plugin);
    target->parameter = find_parameter(owner, name);
    if (!target->parameter) return in_container(target->container, unknown_parameter(owner, name));
    return target;
}

}  // namespace

Result<Done> set_parameter(Stage& stage, int32_t container_handle, std::string_view name, const ParameterValue& value,
                           SetOptions options) {
    const auto target = find_target(stage, container_handle, name);
    if (!target) return target.error();
    const auto encoded = encode_value(*target->parameter, value);
    if (!encoded) return in_container(target->container, encoded.error());
    if (write_value(*target->instance, *target->parameter, *encoded) && options.notify)
        notify_changed(stage, container_handle, target->parameter->index);
    return Done{};
}

Result<ParameterValue> get_parameter(const Stage& stage, int32_t container_handle, std::string_view name) {
    // Finding and reading change nothing; set_parameter needs the same function with a Stage that is not const.
    const auto target = find_target(const_cast<Stage&>(stage), container_handle, name);
    if (!target) return target.error();
    auto value = read_value(*target->instance, *target->parameter);
    if (!value) return in_container(target->container, value.error());
    return value;
}

Result<Done> set_slot_bits(Stage& stage, int32_t container_handle, int32_t index, uint32_t bits) {
    const auto target = find_instance(stage, container_handle);
    if (!target) return target.error();
    const auto slots = plugin(target->instance->plugin).parameters.size();
    if (index < 0 || static_cast<size_t>(index) >= slots)
        return in_container(target->container, {fmt::format("slot {}: there are {} slots, from 0", index, slots)});
    write_slot(*target->instance, index, bits);
    return Done{};
}

bool notify_changed(Stage& stage, int32_t container_handle, int32_t index) {
    Instance* instance = instance_of(stage, container_handle);
    if (!instance) return false;
    call_entry_point(stage, *instance, "PLUGIN_CHANGED_CALLBACK", &EntryPoints::changed_callback, index);
    return true;
}

Result<Done> press_button(Stage& stage, int32_t container_handle, std::string_view button) {
    const auto target = find_instance(stage, container_handle);
    if (!target) return target.error();
    const Plugin& owner = plugin(target->instance->plugin);
    if (const PushButton* found = find_button(owner, button)) {
        execute_action(stage, container_handle, found->action);
        return Done{};
    }
    return in_container(target->container, unknown_button(owner, button));
}

bool execute_action(Stage& stage, int32_t container_handle, int32_t action) {
    Instance* instance = instance_of(stage, container_handle);
    if (!instance) return false;
    call_entry_point(stage, *instance, "PLUGIN_EXEC_ACTION", &EntryPoints::exec_action, action);
    return true;
}

}  // namespace stage
