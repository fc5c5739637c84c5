// Where a plug-in keeps the state of an instance, from a file beside its library: for digests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "stage/plugins/plugin.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

enum class FieldType { kUint8, kInt32, kFloat32, kFloat64, kText, kList, kLink, kPointer };

/// A uint8 or int32 of the block, or a parameter's slot, that must be 0, or must not.
struct FieldCondition {
    size_t offset;  // bytes from the start of the block
    size_t bytes;   // 1 or 4
    bool is_zero;
};

struct Field {
    std::string name;
    FieldType type;
    size_t count;   // of values; of a text its bytes
    size_t offset;  // bytes from the start of the block or record, in this process
    bool never;     // scratch memory
    bool live;      // counts only in records of the first list
    std::vector<FieldCondition> conditions;
};

/// Fields in the order of their places.
struct FieldTable {
    std::vector<Field> block;  // after the parameter slots
    std::vector<Field> record;
};

/// Reads NAME.fields in the folder of the plug-in's library, NAME being the registered name; TovuSmoke.fields explains
/// the format. No file: an empty table. Error, "file:line: …": unknown words, fields beyond the block, lists without a
/// record that has a link.
STAGE_EXPORT Result<FieldTable> read_field_table(const Plugin& plugin);

}  // namespace stage
