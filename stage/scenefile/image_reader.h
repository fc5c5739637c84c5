// The [images] table of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Stores the images by name: a file or a built-in image, or a table of one and how its pictures follow each other.
/// Finds the files of sequences. frame_rate: of sequences that state none.
void read_images(KeyReader& reader, const KeyedNode& entry, double frame_rate, ImageDescriptions& images);

/// The name of one of the images in `entry`, or an empty text after reporting that there is none.
std::string read_image_name(KeyReader& reader, const KeyedNode& entry, const SceneDescription& scene);

/// "images.NAME.file", …
void append_image_keys(std::vector<std::string>& keys);

}  // namespace stage
