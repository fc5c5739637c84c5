// Runs the studio.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

struct StudioOptions {
    std::string file;  // scene or look file, or a look's name; empty: the gallery
    bool fullscreen = false;
    std::string smoke_plugin;   // library
    std::string scenes_folder;  // of the gallery; empty: none
    std::string looks_folder;   // of the gallery; empty: none
    std::string script;         // file of events, see script.h; empty: none
};

/// Opens the window and returns when it is closed. Errors: the window or the file cannot be opened, or the script
/// fails.
stage::Result<stage::Done> run_studio(const StudioOptions& options);

}  // namespace tovu
