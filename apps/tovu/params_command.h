// `tovu params`: shows what a plug-in registers, and what its notes say about it.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

struct ParamsOptions {
    std::string plugin;     // as in a scene file; empty means the smoke; or a parameter of the smoke
    std::string parameter;  // its name: only this one, in full
    bool json = false;      // a JSON object instead of a table
};

/// The text to print, with a newline at its end. The error names the library or parameter and what is wrong with it.
stage::Result<std::string> params_text(const ParamsOptions& options);

}  // namespace tovu
