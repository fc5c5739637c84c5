// The [[container]] tables of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Appends the containers of a [[container]] array and their nested containers, parents before children in any order of
/// the file. A container with a look is followed by the look's layers. Reports missing or repeated names, unknown
/// parents and cyclic parents.
void read_containers(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);

/// Reads the keys of a layer of a look into `layer`, where they override earlier values. Later parameters override
/// earlier ones. section: the table's name in messages.
void read_layer(KeyReader& reader, const toml::table& table, const std::string& section, ContainerDescription& layer);

/// Reads the keys of a container with a look that apply to each of its layers: parameters, texture, depth_test, blend,
/// light.
void read_layer_wide_keys(KeyReader& reader, const toml::table& table, ContainerDescription& layer);

/// The index of the container that `entry` names. Reports an unknown name and returns -1.
int32_t read_container_name(KeyReader& reader, const KeyedNode& entry,
                            const std::vector<ContainerDescription>& containers);

/// Reads a parameter's value. Reports types that no parameter has: tables, arrays, dates.
bool read_value(KeyReader& reader, const KeyedNode& entry, ParameterValue& out);

/// Reads parameter values by registered name, each as read_value does.
void read_settings(KeyReader& reader, const KeyedNode& entry, std::vector<ParameterSetting>& settings);

/// "container.name", "container.geometry.kind", …
void append_container_keys(std::vector<std::string>& keys);

}  // namespace stage
