// `tovu replay`: plays recorded calls to a plug-in.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

struct ReplayOptions {
    std::string calls;   // a file that `tovu record` wrote
    std::string plugin;  // library that replaces the smoke, or without one the first plug-in; empty for none
};

struct ReplayOutcome {
    bool is_equal = false;
    std::string text;  // to print, with a newline at its end
};

/// Error: a file that is no recording, "file:line: …", or a plug-in that does not load.
stage::Result<ReplayOutcome> replay_file(const ReplayOptions& options);

}  // namespace tovu
