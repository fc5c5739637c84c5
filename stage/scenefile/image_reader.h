// The [images] table of a scene file.
#pragma once

#include "key_reader.h"

namespace stage {

/// Stores the images by name. An image is a file, a built-in image, or a table of one of these and its timing. Finds
/// the files of sequences. frame_rate: for sequences that do not state one.
void read_images(KeyReader& reader, const KeyedNode& entry, double frame_rate, ImageDescriptions& images);

/// The name of an image of the scene. Reports an unknown name and returns an empty text.
std::string read_image_name(KeyReader& reader, const KeyedNode& entry, const SceneDescription& scene);

/// "images.NAME.file", …
void append_image_keys(std::vector<std::string>& keys);

}  // namespace stage
