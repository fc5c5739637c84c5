// One instance of a plug-in: its block, its texts and its random numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fenced_memory.h"
#include "low_memory.h"
#include "parameters.h"
#include "plugin.h"
#include "random_stream.h"

namespace stage {

struct Stage;

/// The old, unreadable memory of a text that moved.
struct RetiredText {
    int32_t index;  // parameter index
    FencedMemory memory;
};
constexpr size_t kMostRetiredTexts = 256;  // above this number the oldest is freed

/// The block has exactly the registered size and is zeroed. Its address is divisible by 8 and not by 16, since the
/// contract guarantees no more. Guard bytes behind the block and behind every text detect writes past the end. With
/// StageOptions::memory both lie between unreadable pages instead.
struct Instance {
    PluginId plugin = 0;
    int32_t container_handle = -1;
    int32_t geometry_handle = -1;
    std::unique_ptr<std::byte[]> memory;
    std::byte* block = nullptr;
    LowMemory texts;
    std::vector<char*> text_buffers;  // by parameter index; null for parameters that are not texts
    RandomStream random;

    // With MemoryOptions::fenced only.
    FencedMemory fenced_block;
    std::vector<FencedMemory> fenced_texts;  // by parameter index; empty for parameters that are not texts
    std::vector<RetiredText> retired_texts;  // oldest first
    bool texts_move = false;
};

/// Gives the container an instance of the plug-in: the block with the defaults and then `values` in its slots, then
/// PLUGIN_INIT_FUNCTION. An earlier geometry is removed first. Returns the geometry's handle. The error names
/// the container and the parameter, and nothing is changed.
STAGE_EXPORT Result<int32_t> add_instance(Stage& stage, int32_t container_handle, PluginId plugin,
                                          const ParameterValues& values = {});

/// The instance that the container carries, or null.
STAGE_EXPORT Instance* instance_of(Stage& stage, int32_t container_handle);
STAGE_EXPORT const Instance* instance_of(const Stage& stage, int32_t container_handle);

/// Sends a request to the container's instance, as `_api__geom_dispatcher` does, without recording the call. False if
/// the container has no instance.
STAGE_EXPORT bool dispatch(Stage& stage, int32_t container_handle, int32_t request, void* data, void* reply);

}  // namespace stage
