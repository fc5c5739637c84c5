// Figures and goals as tables that people read.
#pragma once

#include <string>

#include "goals.h"

namespace bench {

/// The machine and the build, a line each: processor, compiler, flags, commit.
std::string about_this_build();

/// Goals with bound and measured ratio; a line for each, in the format of a Markdown table.
std::string goal_table(const std::vector<Outcome>& outcomes);

/// All figures, by subject: nanoseconds for one, the median of the rounds and the fastest, as a Markdown table.
std::string figure_table(const Figures& figures);

}  // namespace bench
