// What the ffmpeg command is told for each kind of video file. Inside the library only.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "stage/output/video_file.h"

namespace stage {

struct VideoFormat {
    std::string ending;                // ".mp4"
    std::string muxer;                 // ffmpeg's name of the file format
    bool alpha;                        // frames go in as RGBA, else as RGB over the background
    bool even_size;                    // the chroma is halved and must come out even
    std::vector<std::string> encoder;  // arguments of codec and pixels
};

const std::vector<VideoFormat>& video_formats();

/// Null for another ending; upper case counts as lower.
const VideoFormat* find_video_format(const std::filesystem::path& path);

/// The whole command line: raw frames on standard input, top row first, into `output`.
std::vector<std::string> ffmpeg_arguments(const VideoFormat& format, const VideoSettings& settings,
                                          const std::filesystem::path& output);

}  // namespace stage
