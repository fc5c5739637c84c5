// Samples of curves from the plug-in.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "stage/scene/stage.h"
#include "stage/scenefile/plugin_notes.h"

namespace tovu {

/// The samples of the instance's curves by parameter name: position and components of each point. Includes the curves
/// whose notes name a button that writes samples and the parameter it writes to. Presses these buttons. Leaves out a
/// curve if the plug-in writes no valid samples.
std::map<std::string, std::vector<double>> curve_samples(stage::Stage& stage, int32_t container_handle,
                                                         const stage::PluginNotes& notes);

}  // namespace tovu
