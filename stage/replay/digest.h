// Digests of the state of plug-in instances.
#pragma once

#include <cstdint>
#include <map>

#include "field_table.h"
#include "stage/plugins/instance.h"
#include "stage/scene/stage.h"

namespace stage {

using FieldTables = std::map<PluginId, FieldTable>;

/// Of all plug-ins that are loaded. The error is that of read_field_table.
STAGE_EXPORT Result<FieldTables> read_field_tables();

/// The digest of an instance after its PLUGIN_NEW_GEOM:
/// - parameter slots, texts by their characters;
/// - the fields of the block, in order; no addresses, and nothing that is not set yet;
/// - the records of each list, in the order of the lists and in list order.
/// It is the same on every platform on which these are the same, bit for bit. Of a plug-in without a table only slots
/// count.
STAGE_EXPORT uint64_t state_digest(const Instance& instance, const FieldTable& table);

/// The records on the first list of an instance: its live particles. 0 for a plug-in without a table.
STAGE_EXPORT int64_t live_records(const Instance& instance, const FieldTable& table);

/// The digest of a frame that has run: of every instance, in tree order, the name of its container, its state and the
/// bounding box that it sent last.
STAGE_EXPORT uint64_t frame_digest(const Stage& stage, const FieldTables& tables);

}  // namespace stage
