// Digests of the state of plug-in instances.
#pragma once

#include <cstdint>
#include <map>

#include "field_table.h"
#include "stage/plugins/instance.h"
#include "stage/scene/stage.h"

namespace stage {

using FieldTables = std::map<PluginId, FieldTable>;

/// The field tables of all loaded plug-ins. Errors as for read_field_table.
STAGE_EXPORT Result<FieldTables> read_field_tables();

/// The digest of an instance after its PLUGIN_NEW_GEOM:
/// - parameter slots, texts by their characters;
/// - the fields of the block, in order, without addresses and unset fields;
/// - the records of each list, in the order of the lists and in list order.
/// It is equal on all platforms on which these values have the same bits. For a plug-in without a field table only the
/// slots are used.
STAGE_EXPORT uint64_t state_digest(const Instance& instance, const FieldTable& table);

/// The number of live particles: the length of the first list of an instance. 0 for a plug-in without a field table.
STAGE_EXPORT int64_t live_records(const Instance& instance, const FieldTable& table);

/// The digest of a simulated frame. Contains the container name, the state and the last bounding box of every instance,
/// in tree order.
STAGE_EXPORT uint64_t frame_digest(const Stage& stage, const FieldTables& tables);

}  // namespace stage
