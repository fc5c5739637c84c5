// Finds the parameter slots of an instance that changed since the last call.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stage/plugins/instance.h"

namespace stage {

/// The last seen slots and texts, by index; empty before the first call.
struct SeenSlots {
    std::vector<uint32_t> bits;
    std::vector<std::string> texts;
};

/// The changed slots as "NAME VALUE", in the order of their indices; all slots at the first call. VALUE is a number, a
/// quoted text, or "elsewhere" if the slot of a text does not point to the host's buffer.
std::vector<std::string> take_changed_slots(SeenSlots& seen, const Instance& instance);

/// Sets a slot from a text "NAME VALUE", without notifying the plug-in. False if the plug-in has no such slot or value.
bool set_slot(Instance& instance, std::string_view name_and_value);

}  // namespace stage
