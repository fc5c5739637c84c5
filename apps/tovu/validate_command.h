// `tovu validate`: checks a plug-in against the contract.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

constexpr double kValidateTimeoutSeconds = 10;

struct ValidateOptions {
    std::string plugin;             // library file, or a name that scenes take; empty: the smoke
    std::vector<std::string> only;  // checks or groups to run, with those that must hold before; empty: all
    std::string seed = "1";
    double timeout_seconds = kValidateTimeoutSeconds;  // for one call into the plug-in; above 0
    bool json = false;
    bool list = false;
    bool strict = false;      // warnings count as failures
    bool in_process = false;  // for a debugger: no processes, no time limit
};

/// Runs the checks. `print` gets the report piece by piece, the verdict last. Returns the exit status: 0 all hold, 1
/// not, 2 nothing could be checked. The error is a mistake in the options.
stage::Result<int> validate_plugin(const ValidateOptions& options,
                                   const std::function<void(const std::string&)>& print);

}  // namespace tovu
