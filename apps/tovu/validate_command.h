// `tovu validate`: checks a plug-in against the contract.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

constexpr double kValidateTimeoutSeconds = 10;

struct ValidateOptions {
    std::string plugin;  // library file, or a name that scenes take; empty: the smoke
    std::vector<std::string>
        only;  // checks or groups to run, in addition to the checks that they depend on; empty: all
    std::string seed = "1";
    double timeout_seconds = kValidateTimeoutSeconds;  // for one call into the plug-in; above 0
    bool json = false;
    bool list = false;
    bool strict = false;      // warnings count as failures
    bool in_process = false;  // for a debugger: no processes, no time limit
};

/// Runs the checks. `print` is called with parts of the report; the verdict comes last. Returns the exit status: 0 all
/// checks pass, 1 a check fails, 2 nothing could be checked. Error: a mistake in the options.
stage::Result<int> validate_plugin(const ValidateOptions& options,
                                   const std::function<void(const std::string&)>& print);

}  // namespace tovu
