// Parameters and buttons of an instance: values are checked, written into its slots and read back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "plugin.h"

namespace stage {

/// By name, in the order they are to be set.
using ParameterValues = std::vector<std::pair<std::string, ParameterValue>>;

struct SetOptions {
    bool notify = true;  // tell the instance by PLUGIN_CHANGED_CALLBACK, when the value differs from the one before
};

/// Sets a parameter of the instance that the container carries. The error names container and parameter; nothing is
/// changed then.
STAGE_EXPORT Result<Done> set_parameter(Stage& stage, int32_t container_handle, std::string_view name,
                                        const ParameterValue& value, SetOptions options = {});

/// The value in the slot at this moment, which the plug-in may have written itself. An error for an unknown container
/// or parameter, and for a text slot whose bits point elsewhere than to the host's buffer; a slot of 0 reads as "".
STAGE_EXPORT Result<ParameterValue> get_parameter(const Stage& stage, int32_t container_handle, std::string_view name);

/// Writes any 32 bits into a slot, unchecked and without notice. index: position of the parameter.
STAGE_EXPORT Result<Done> set_slot_bits(Stage& stage, int32_t container_handle, int32_t index, uint32_t bits);

/// Calls PLUGIN_CHANGED_CALLBACK with any index. False when the container carries no instance.
STAGE_EXPORT bool notify_changed(Stage& stage, int32_t container_handle, int32_t index);

/// Presses a push button by name. The error lists the buttons there are.
STAGE_EXPORT Result<Done> press_button(Stage& stage, int32_t container_handle, std::string_view button);

/// Calls PLUGIN_EXEC_ACTION with any number. False when the container carries no instance.
STAGE_EXPORT bool execute_action(Stage& stage, int32_t container_handle, int32_t action);

}  // namespace stage
