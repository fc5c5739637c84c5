// Figures and goals as tables that people read, and as data to plot.
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

/// Columns for a plot: the count, then the median nanoseconds of each of the cases at that count; a case that was not
/// measured is "nan".
std::string plot_columns(const Figures& figures, const std::vector<std::string>& subjects,
                         const std::vector<int32_t>& counts);

}  // namespace bench
