// The ffmpeg command line for each video format. Internal to the library.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "video_file.h"

namespace stage {

struct VideoFormat {
    std::string ending;                // ".mp4"
    std::string muxer;                 // ffmpeg's name of the file format
    std::string pixels;                // ffmpeg's name of the pixel format
    bool alpha;                        // frames are sent as RGBA, else as RGB over black
    bool even_size;                    // the chroma planes are half as large: both sides must be even
    std::vector<std::string> encoder;  // its name and arguments
};

const std::vector<VideoFormat>& video_formats();

/// The format for the ending of a name, in upper or lower case; null if there is none.
const VideoFormat* find_video_format(const std::filesystem::path& path);

/// The whole command line: raw frames with 16 bits per channel on standard input, top row first, into `output`.
std::vector<std::string> ffmpeg_arguments(const VideoFormat& format, const VideoSettings& settings,
                                          const std::filesystem::path& output);

}  // namespace stage
