// Parameters and buttons of an instance: values are checked, written into its slots and read back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "plugin.h"

namespace stage {

/// By name, in the order of setting.
using ParameterValues = std::vector<std::pair<std::string, ParameterValue>>;

struct SetOptions {
    bool notify = true;  // call PLUGIN_CHANGED_CALLBACK when the value differs from the old one
};

/// Sets a parameter of the instance that the container carries. The error names container and parameter, and
/// nothing is changed.
STAGE_EXPORT Result<Done> set_parameter(Stage& stage, int32_t container_handle, std::string_view name,
                                        const ParameterValue& value, SetOptions options = {});

/// The slot's current value, which the plug-in may have written itself. An error for an unknown container
/// or parameter, and for a text slot that does not hold the address of the host's buffer; a slot of 0 reads as "".
STAGE_EXPORT Result<ParameterValue> get_parameter(const Stage& stage, int32_t container_handle, std::string_view name);

/// Writes any 32 bits into a slot, without a check and without PLUGIN_CHANGED_CALLBACK. index: position of the
/// parameter.
STAGE_EXPORT Result<Done> set_slot_bits(Stage& stage, int32_t container_handle, int32_t index, uint32_t bits);

/// Calls PLUGIN_CHANGED_CALLBACK with any index. False when the container carries no instance.
STAGE_EXPORT bool notify_changed(Stage& stage, int32_t container_handle, int32_t index);

/// Presses a push button by name.
STAGE_EXPORT Result<Done> press_button(Stage& stage, int32_t container_handle, std::string_view button);

/// Calls PLUGIN_EXEC_ACTION with any number. False when the container carries no instance.
STAGE_EXPORT bool execute_action(Stage& stage, int32_t container_handle, int32_t action);

}  // namespace stage
