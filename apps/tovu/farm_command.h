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

/// Submits a job array that renders the chunks as 16-bit pictures into the folder OUTPUT.farm, and a job behind it that
/// makes the video. render: the options of the one output, as parsed from render_arguments; everything in them is
/// checked first. Chunks that are not whole when the array has ended are submitted again, at most three times. A row
/// of numbered pictures is rendered in place.
stage::Result<stage::Done> start_farm(const FarmOptions& options, const RenderOptions& render, const FarmPrint& print);

/// The job behind the chunks. folder: OUTPUT.farm. The error names the chunks that are not whole after the last try.
stage::Result<stage::Done> finish_farm(const std::string& folder, const FarmPrint& print);

/// How far the chunks are, and the state of their jobs.
stage::Result<stage::Done> show_farm(const std::string& output, const FarmPrint& print);

/// Takes the jobs back. Pictures stay.
stage::Result<stage::Done> cancel_farm(const std::string& output, const FarmPrint& print);

}  // namespace tovu
