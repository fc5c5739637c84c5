// Values of parameters: checked against what the plug-in registered, and as the bits and the text of a slot.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "plugin.h"

namespace stage {

struct SlotValue {
    uint32_t bits = 0;  // of Int, Float, Bool and Radio
    std::string text;   // of String, Container and Image
};

/// The value as its slot holds it. Errors as for check_parameter.
Result<SlotValue> encode_value(const ParameterInfo& parameter, const ParameterValue& value);

/// Whether the parameter takes this value. The error names the parameter, not the container or file: callers put those
/// in front. It says what is right: the kind, the range, the choices, the longest text.
STAGE_EXPORT Result<Done> check_parameter(const ParameterInfo& parameter, const ParameterValue& value);

/// "parameter 'birth_rat' is not known to TovuSmoke: did you mean 'birth_rate'?"
STAGE_EXPORT Error unknown_parameter(const Plugin& plugin, std::string_view name);

/// "TovuSmoke has no push button 'rest': did you mean 'reset'?"
STAGE_EXPORT Error unknown_button(const Plugin& plugin, std::string_view name);

}  // namespace stage
