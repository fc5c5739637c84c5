// Selects the generator behind `rand` in this process: the C library's, or the Stage's for some cases.
#pragma once

#include "rounds.h"

namespace bench {

/// The same case under another name, in which each call of `rand`, also by the plug-in, uses the Stage's generator.
Case with_stage_rand(std::string name, Case of);

}  // namespace bench
