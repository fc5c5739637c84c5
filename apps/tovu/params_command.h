// `tovu params`: shows what a plug-in registers.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

struct ParamsOptions {
    std::string plugin;  // as in a scene file; empty means the smoke
    bool json = false;   // a JSON object instead of a table
};

/// The text to print, with a newline at its end. The error names the library and what is wrong with it.
stage::Result<std::string> params_text(const ParamsOptions& options);

}  // namespace tovu
