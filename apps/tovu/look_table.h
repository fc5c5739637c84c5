// Look files as TOML tables, to be made, changed and written. Keys are not interpreted beyond what is needed, so that
// every key of a container survives.
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

/// The table of a file that has been read without an error before.
toml::table parsed_file(const std::filesystem::path& file);

/// Replaces the file names in images and shapes, which are relative to `from`, by such that are relative to `to`.
void move_files(toml::table& look, const std::filesystem::path& from, const std::filesystem::path& to);

/// Gives the look's layers the values for another frame rate. file: where the look was read; it must be right. Appends
/// to `warnings` what could not be converted.
stage::Result<stage::Done> retime_look(toml::table& look, const std::filesystem::path& file, double frame_rate,
                                       const stage::Plugin& smoke, std::vector<std::string>& warnings);

/// A look made of the container of a scene that has been read from `table`: the container itself, those nested in it,
/// and the layers of its look with what the scene changes. Parameters that equal their default are left out. File names
/// stay relative to the scene's folder. The error says why nothing can be made of the container.
stage::Result<toml::table> look_of_container(const stage::SceneDescription& scene, const toml::table& table,
                                             const std::string& container, const stage::Plugin& smoke,
                                             std::vector<std::string>& warnings);

/// The text of a look file: parameters in the order of their registration.
std::string look_text(const toml::table& look, const stage::Plugin& smoke);

/// Every value by its dotted name: "purpose", "images.rise.file", "wisps.texture", "wisps.birth_rate".
std::map<std::string, std::string> flat_values(const toml::table& look);

}  // namespace tovu
