// `tovu lint`: explains what would surprise in a scene or a look.
#pragma once

#include <string>
#include <vector>

#include "stage/result.h"

namespace tovu {

struct LintOptions {
    std::string scene;   // a scene file, a look's file or the name of a look
    std::string plugin;  // library of the plug-in "smoke"
};

/// A line for each surprise, the warnings of a render included; none for a scene without any. A look is taken as it
/// stands, alone in a scene of its own frame rate that runs for a minute.
/// The error is that of the scene or look, a line for each mistake.
stage::Result<std::vector<std::string>> lint_file(const LintOptions& options);

}  // namespace tovu
