// The memory of an instance: its block, its slots and its texts.
#pragma once

#include <string>
#include <vector>

#include "instance.h"
#include "parameter_values.h"
#include "stage/scene/memory_options.h"

namespace stage {

/// Allocates the block and the texts, fills the slots with the registered defaults and lays the guard bytes.
/// False if the system has no memory below 4 GiB left for the texts.
bool allocate_memory(Instance& instance, const MemoryOptions& options);

uint32_t read_slot(const Instance& instance, int32_t index);
void write_slot(Instance& instance, int32_t index, uint32_t bits);

/// Writes the slot and its text, which moves with MemoryOptions::texts_move. True if the value changes.
bool write_value(Instance& instance, const ParameterInfo& parameter, const SlotValue& value);

/// The value of the slot. Error: a text slot that does not point to the host's buffer.
Result<ParameterValue> read_value(const Instance& instance, const ParameterInfo& parameter);

/// Finds overwritten bytes around block and texts. Returns a sentence for each; each write is reported once.
std::vector<std::string> repair_guards(Instance& instance);

}  // namespace stage
