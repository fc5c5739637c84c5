// Which generator `rand` is in this process: the C library's, but for cases that ask for the Stage's.
#pragma once

#include "rounds.h"

namespace bench {

/// The same case under another name, with every `rand` drawn from the Stage's generator, the plug-in's included.
Case with_stage_rand(std::string name, Case of);

}  // namespace bench
