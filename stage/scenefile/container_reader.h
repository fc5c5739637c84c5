// The [[container]] tables of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Appends the containers of one [[container]] array and all nested in them, parents before children, whatever the
/// order in the file. Reports missing or repeated names, unknown parents and circles of parents.
void read_containers(KeyReader& reader, const KeyedNode& entry, std::vector<ContainerDescription>& containers);

/// Index of the container whose name stands in `entry`, or -1 after reporting that there is none.
int32_t read_container_name(KeyReader& reader, const KeyedNode& entry,
                            const std::vector<ContainerDescription>& containers);

/// A parameter's value as written; reports what no parameter can be: tables, arrays, dates.
bool read_value(KeyReader& reader, const KeyedNode& entry, ParameterValue& out);

/// Parameter values by registered name, as read_value reads them.
void read_settings(KeyReader& reader, const KeyedNode& entry, std::vector<ParameterSetting>& settings);

/// "container.name", "container.geometry.kind", …
void append_container_keys(std::vector<std::string>& keys);

}  // namespace stage
