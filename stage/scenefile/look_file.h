// Looks: smoke that is ready to use, as a file of one or more layers with the images that they need.
#pragma once

#include "image_reader.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct LookDescription {
    std::filesystem::path file;
    std::string purpose;                       // one line: what the look is for
    double rate = 0.0;                         // frames per second that its values were made at, 1…1000
    ImageDescriptions images;                  // by the names that its layers use
    std::vector<ContainerDescription> layers;  // one or more; names unique in the look
};

/// The folder of the looks and images that come along.
STAGE_EXPORT std::filesystem::path shipped_looks_folder();

/// The file that a look's name stands for. A name with a slash or that ends in .toml: that file, relative to
/// `scene_folder`. Any other: NAME.toml in `scene_folder`/looks, then in shipped_looks_folder(). The error says which
/// names there are.
STAGE_EXPORT Result<std::filesystem::path> find_look_file(const std::string& name,
                                                          const std::filesystem::path& scene_folder);

/// The look files of a folder, by name: its TOML files but images.toml. None when there is no such folder.
STAGE_EXPORT std::vector<std::filesystem::path> look_files(const std::filesystem::path& folder);

/// Reads a look file. The error has one line for each mistake, as for scene files.
STAGE_EXPORT Result<LookDescription> load_look_file(const std::filesystem::path& file);

}  // namespace stage
