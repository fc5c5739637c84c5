// From a parameter's value to the bits and the text of its slot.
#pragma once

#include <cstdint>
#include <string>

#include "parameters.h"

namespace stage {

struct SlotValue {
    uint32_t bits = 0;  // of Int, Float, Bool and Radio
    std::string text;   // of String, Container and Image
};

/// The value as its slot holds it. Errors as those of check_parameter.
Result<SlotValue> encode_value(const ParameterInfo& parameter, const ParameterValue& value);

}  // namespace stage
