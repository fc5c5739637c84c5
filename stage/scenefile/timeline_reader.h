// The [[at]] and [[track]] tables of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Both read the containers of `scene`, which must be complete, and add to its timeline and its tracks.
void read_timeline(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);
void read_tracks(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);

/// "at.time", "track.keys", "track.keys.ease", …
void append_timeline_keys(std::vector<std::string>& keys);

}  // namespace stage
