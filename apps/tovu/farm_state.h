// The state of a render on a farm, stored as farm.json in its folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "option_values.h"
#include "stage/result.h"

namespace tovu {

struct FarmState {
    std::string output;   // as given with -o
    std::string pattern;  // of the pictures that chunks render
    FrameRange frames;    // of all chunks
    int chunks = 1;
    int tries = 0;                               // number of submissions
    std::vector<std::string> chunk_command;      // renders a chunk; --chunk is added
    std::vector<std::string> video_command;      // empty if the output is numbered pictures
    std::vector<std::string> cluster_arguments;  // for sbatch
    std::string chunk_job;                       // job numbers
    std::string finish_job;
    bool finished = false;
};

/// "clip.mov.farm" for "clip.mov", "frames/row.png.farm" for "frames/%04d.png".
stage::Result<std::filesystem::path> farm_folder(const std::string& output);

stage::Result<FarmState> read_farm(const std::filesystem::path& folder);
stage::Result<stage::Done> write_farm(const std::filesystem::path& folder, const FarmState& state);

/// The frames of a chunk, counted from 1.
FrameRange chunk_frames(const FarmState& state, int chunk);

}  // namespace tovu
