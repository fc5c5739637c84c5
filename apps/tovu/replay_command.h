// `tovu replay`: plays recorded calls to a plug-in.
#pragma once

#include <string>

#include "stage/result.h"

namespace tovu {

struct ReplayOptions {
    std::string calls;   // a file that `tovu record` wrote
    std::string plugin;  // replaces the smoke, or the first plug-in if there is no smoke; empty: the recorded ones
};

struct ReplayOutcome {
    bool is_equal = false;
    std::string text;  // to print, with a newline at its end
};

/// Errors: the file is not a recording ("file:line: …"); a plug-in does not load.
stage::Result<ReplayOutcome> replay_file(const ReplayOptions& options);

}  // namespace tovu
