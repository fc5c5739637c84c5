// What is known about a render on a farm, in the file farm.json of its folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "option_values.h"
#include "stage/result.h"

namespace tovu {

struct FarmState {
    std::string output;  // as given with -o
    std::string row;     // pattern of the pictures that chunks render
    FrameRange frames;   // of all chunks
    int chunks = 1;
    int tries = 0;                               // how often chunks were submitted
    std::vector<std::string> chunk_command;      // renders a chunk, but for --chunk
    std::vector<std::string> video_command;      // empty when the output is the row
    std::vector<std::string> cluster_arguments;  // for sbatch
    std::string chunk_job;                       // numbers of the jobs
    std::string finish_job;
    bool finished = false;
};

/// "clip.mov.farm" for "clip.mov", "frames/row.png.farm" for "frames/%04d.png".
stage::Result<std::filesystem::path> farm_folder(const std::string& output);

stage::Result<FarmState> read_farm(const std::filesystem::path& folder);
stage::Result<stage::Done> write_farm(const std::filesystem::path& folder, const FarmState& state);

/// The frames of chunk 1 to state.chunks.
FrameRange chunk_frames(const FarmState& state, int chunk);

}  // namespace tovu
