// The layout of the state of an instance, for digests. Read from a file beside the library of the plug-in.
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

/// A condition on a uint8 or int32 of the block, or on a parameter's slot: it must be 0, or must not be 0.
struct FieldCondition {
    size_t offset;  // bytes from the start of the block
    size_t bytes;   // 1 or 4
    bool is_zero;
};

struct Field {
    std::string name;
    FieldType type;
    size_t count;   // number of values; bytes of a text
    size_t offset;  // bytes from the start of the block or record, in this process
    bool never;     // scratch memory, not in the digest
    bool live;      // in the digest only for records of the first list
    std::vector<FieldCondition> conditions;
};

/// Fields in ascending order of offsets.
struct FieldTable {
    std::vector<Field> block;  // after the parameter slots
    std::vector<Field> record;
};

/// Reads NAME.fields in the folder of the plug-in's library, where NAME is the registered name. TovuSmoke.fields
/// explains the format. An empty table if there is no file. Errors, as "file:line: …": unknown words, fields beyond the
/// block, lists without a link in the record.
STAGE_EXPORT Result<FieldTable> read_field_table(const Plugin& plugin);

}  // namespace stage
