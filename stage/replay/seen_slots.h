// Which parameter slots of an instance changed since they were last looked at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stage/plugins/instance.h"

namespace stage {

/// Slots and texts by index; empty before the first look.
struct SeenSlots {
    std::vector<uint32_t> bits;
    std::vector<std::string> texts;
};

/// The slots that changed, as "NAME VALUE" in the order of their indices; at the first look all of them. VALUE is a
/// number, a quoted text, or "elsewhere" where the slot of a text does not lead to the host's buffer.
std::vector<std::string> take_changed_slots(SeenSlots& seen, const Instance& instance);

/// Sets the slot that such a text names, without notifying the plug-in. False when it is none of the plug-in's.
bool set_slot(Instance& instance, std::string_view name_and_value);

}  // namespace stage
