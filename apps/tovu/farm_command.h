// `tovu farm`: renders a scene in chunks on the machines of a Slurm cluster.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "render_command.h"
#include "stage/result.h"

namespace tovu {

struct FarmOptions {
    std::string chunks;                          // 1 to the number of frames
    std::vector<std::string> render_arguments;   // as given, for the render of the video: scene, -o and all others
    std::vector<std::string> cluster_arguments;  // for sbatch, such as --partition=night
};

/// A line for standard output, without its newline.
using FarmPrint = std::function<void(const std::string& line)>;

/// Submits a job array that renders the chunks as 16-bit pictures into the folder OUTPUT.farm, and a finish job that
/// makes the video afterwards. Numbered pictures are rendered in place. Incomplete chunks are submitted again when the
/// array has ended, at most three times.
/// render: the options of the one output, parsed from render_arguments; they are checked before anything is submitted.
stage::Result<stage::Done> start_farm(const FarmOptions& options, const RenderOptions& render, const FarmPrint& print);

/// The work of the finish job. folder: OUTPUT.farm. The error names the chunks that are incomplete after the last try.
stage::Result<stage::Done> finish_farm(const std::string& folder, const FarmPrint& print);

/// Prints the progress of the chunks and the state of their jobs.
stage::Result<stage::Done> show_farm(const std::string& output, const FarmPrint& print);

/// Cancels the jobs. Pictures stay.
stage::Result<stage::Done> cancel_farm(const std::string& output, const FarmPrint& print);

}  // namespace tovu
