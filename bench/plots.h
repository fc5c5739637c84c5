// Figures as columns that gnuplot reads; plots.gp makes pictures of them.
#pragma once

#include <string>

#include "rounds.h"

namespace bench {

/// Writes into an existing folder particles.dat (particles, then nanoseconds for one, by subject) and instances.dat
/// (instances, then milliseconds for a frame of all). Of the fastest rounds, since a slow moment of the machine would
/// show as a bend; "nan" for what was not measured. Throws std::runtime_error when a file cannot be written.
void write_plot_data(const Figures& figures, const std::string& folder);

}  // namespace bench
