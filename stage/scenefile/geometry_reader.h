// Reads the table of a shape: a container's geometry, at the start or in the timeline.
#pragma once

#include "key_reader.h"

namespace stage {

/// Stores the shape. Reports an unknown kind, keys that the kind does not have, and missing keys.
void read_geometry(KeyReader& reader, const KeyedNode& entry, std::optional<GeometryDescription>& out);

/// "container.geometry.kind", …
void append_geometry_keys(std::vector<std::string>& keys);

}  // namespace stage
