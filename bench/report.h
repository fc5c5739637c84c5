// Figures and goals as Markdown tables.
#pragma once

#include <string>

#include "goals.h"

namespace bench {

/// Processor, compiler, flags and commit, one line each.
std::string about_this_build();

/// Goals with bound and measured ratio.
std::string goal_table(const std::vector<Outcome>& outcomes);

/// All figures by name, in nanoseconds: the median of the rounds and the fastest round.
std::string figure_table(const Figures& figures);

}  // namespace bench
