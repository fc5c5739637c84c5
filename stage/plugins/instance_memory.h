// The memory behind an instance: its block, its slots and its texts.
#pragma once

#include <string>
#include <vector>

#include "instance.h"
#include "parameter_values.h"
#include "stage/scene/memory_options.h"

namespace stage {

/// Allocates the block and the texts, fills the slots with the registered defaults and lays the guard bytes.
/// False when the system has no memory below 4 GiB left for the texts.
bool allocate_memory(Instance& instance, const MemoryOptions& options);

uint32_t read_slot(const Instance& instance, int32_t index);
void write_slot(Instance& instance, int32_t index, uint32_t bits);

/// Writes the slot, and the text behind it, which moves where the instance's texts do. Returns whether anything differs
/// from before.
bool write_value(Instance& instance, const ParameterInfo& parameter, const SlotValue& value);

/// What the slot holds now. An error for a text slot that leads elsewhere than to the host's buffer.
Result<ParameterValue> read_value(const Instance& instance, const ParameterInfo& parameter);

/// Which bytes around block and texts are no longer as laid, a sentence each; each write is told once.
std::vector<std::string> repair_guards(Instance& instance);

}  // namespace stage
