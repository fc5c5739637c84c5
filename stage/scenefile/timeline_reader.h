// The [[at]] and [[track]] tables of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Add to the timeline and to the tracks of the scene, whose containers must be complete.
void read_timeline(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);
void read_tracks(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);

/// "at.time", "track.keys", "track.keys.ease", …
void append_timeline_keys(std::vector<std::string>& keys);

}  // namespace stage
