// Looks: ready-made smoke, in files with one or more layers and the images that they need.
#pragma once

#include "image_reader.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct LookDescription {
    std::filesystem::path file;
    std::string purpose;                       // the use of the look, in one line
    double rate = 0.0;                         // frames per second that its values are made for, 1…1000
    ImageDescriptions images;                  // by the names that its layers use
    std::vector<ContainerDescription> layers;  // one or more; names unique in the look
};

/// The folder of the installed looks and built-in images.
STAGE_EXPORT std::filesystem::path shipped_looks_folder();

/// Finds the file of a look. A name with a slash or the ending .toml is a file, relative to `scene_folder`. Any other
/// name is NAME.toml in `scene_folder`/looks or else in shipped_looks_folder(). The error lists or suggests known
/// names.
STAGE_EXPORT Result<std::filesystem::path> find_look_file(const std::string& name,
                                                          const std::filesystem::path& scene_folder);

/// The look files of a folder, sorted by name: its TOML files except images.toml. None if the folder does not exist.
STAGE_EXPORT std::vector<std::filesystem::path> look_files(const std::filesystem::path& folder);

/// Reads a look file. The error has one line for each mistake, as for scene files.
STAGE_EXPORT Result<LookDescription> load_look_file(const std::filesystem::path& file);

}  // namespace stage
