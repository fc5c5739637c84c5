// `tovu params`: shows what a plug-in registers, and what its notes say about it.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

struct ParamsOptions {
    std::string plugin;     // name as in a scene file, or a parameter of the smoke; empty means the smoke
    std::string parameter;  // show only this one, with all details
    bool json = false;      // a JSON object instead of a table
};

/// The text to print, with a newline at its end. The error names the library or parameter and the mistake.
stage::Result<std::string> params_text(const ParamsOptions& options);

}  // namespace tovu
