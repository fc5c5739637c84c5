// The table of a shape that smoke can be born from: a container's geometry, from the start or through the timeline.
#pragma once

#include "key_reader.h"

namespace stage {

/// Stores the shape, or reports a kind that is not known, keys that its kind does not have and keys that it lacks.
void read_geometry(KeyReader& reader, const KeyedNode& entry, std::optional<GeometryDescription>& out);

/// "container.geometry.kind", …
void append_geometry_keys(std::vector<std::string>& keys);

}  // namespace stage
