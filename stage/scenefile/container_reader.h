// The [[container]] tables of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Appends the containers of one [[container]] array and all nested in them, parents before children, whatever the
/// order in the file; behind one with a look, the look's layers. Reports missing or repeated names, unknown parents and
/// circles of parents.
void read_containers(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);

/// Reads the keys that a layer of a look may have over what `layer` has already; later parameters override earlier
/// ones. section: the table's name in messages.
void read_layer(KeyReader& reader, const toml::table& table, const std::string& section, ContainerDescription& layer);

/// Reads those keys of a container with a look that hold for each of its layers: parameters, texture, blend, light.
void read_layer_wide_keys(KeyReader& reader, const toml::table& table, ContainerDescription& layer);

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
