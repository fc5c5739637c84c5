// Look files as TOML tables, for creating, changing and writing them. Unknown keys of a container stay unchanged.
#pragma once

#include <toml++/toml.h>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "stage/plugins/plugin.h"
#include "stage/result.h"
#include "stage/scenefile/scene_description.h"

namespace tovu {

/// The table of a file that was read without an error before.
toml::table parsed_file(const std::filesystem::path& file);

/// Converts the file names of images and shapes from paths relative to `from` to paths relative to `to`.
void move_files(toml::table& look, const std::filesystem::path& from, const std::filesystem::path& to);

/// Converts the values of the look's layers to another frame rate. file: the file that the look was read from. Appends
/// to `warnings` a line for each value that could not be converted.
stage::Result<stage::Done> retime_look(toml::table& look, const std::filesystem::path& file, double frame_rate,
                                       const stage::Plugin& smoke, std::vector<std::string>& warnings);

/// A look made from a container of the scene that was read from `table`: the container, its nested containers, and the
/// layers of its look with the scene's changes. Parameters that equal their default are left out. File names stay
/// relative to the scene's folder. The error says why the container cannot become a look.
stage::Result<toml::table> look_of_container(const stage::SceneDescription& scene, const toml::table& table,
                                             const std::string& container, const stage::Plugin& smoke,
                                             std::vector<std::string>& warnings);

/// The text of a look file, with the parameters in the order of their registration.
std::string look_text(const toml::table& look, const stage::Plugin& smoke);

/// Every value by its dotted name: "purpose", "images.rise.file", "wisps.texture", "wisps.birth_rate".
std::map<std::string, std::string> flat_values(const toml::table& look);

}  // namespace tovu
