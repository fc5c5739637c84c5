// Curves as a plug-in made them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "stage/scene/stage.h"
#include "stage/scenefile/plugin_notes.h"

namespace tovu {

/// The samples of each curve of an instance whose notes say how to get them, by the curve's parameter: position and
/// components of each point. None for a curve that its text does not give. Presses buttons of the instance, which write
/// into parameters that the notes name.
std::map<std::string, std::vector<double>> curve_samples(stage::Stage& stage, int32_t container_handle,
                                                         const stage::PluginNotes& notes);

}  // namespace tovu
