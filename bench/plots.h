// Writes figures as data files for gnuplot, which draws them with plots.gp.
#pragma once

#include <string>

#include "rounds.h"

namespace bench {

/// Writes two files to an existing folder. particles.dat: number of particles, then nanoseconds per particle for each
/// subject. instances.dat: number of instances, then milliseconds per frame of all of them. Values are those of the
/// fastest rounds, which are least disturbed by other programs; "nan" where nothing was measured. Throws
/// std::runtime_error when a file cannot be written.
void write_plot_data(const Figures& figures, const std::string& folder);

}  // namespace bench
