// `tovu lint`: explains settings of a scene or a look that have a surprising result.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

struct LintOptions {
    std::string scene;   // a scene file, a look's file or the name of a look
    std::string plugin;  // library of the plug-in "smoke"
};

/// A line for each surprise, including the warnings of a render. A look is checked alone, in a scene of its own frame
/// rate that runs for a minute. The error has a line for each mistake in the scene or look.
stage::Result<std::vector<std::string>> lint_file(const LintOptions& options);

}  // namespace tovu
