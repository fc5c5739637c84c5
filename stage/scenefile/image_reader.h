// The [images] table of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Stores the images by name: a file, or a table of a file and how its numbered pictures follow each other. Finds the
/// files of sequences. Reads the frame rate of `scene`, which is theirs when they have none.
void read_images(KeyReader& reader, const KeyedNode& entry, SceneDescription& scene);

/// The name of one of the images in `entry`, or an empty text after reporting that there is none.
std::string read_image_name(KeyReader& reader, const KeyedNode& entry, const SceneDescription& scene);

/// "images.NAME.file", …
void append_image_keys(std::vector<std::string>& keys);

}  // namespace stage
