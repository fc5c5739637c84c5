// The ffmpeg command line for each video format. Internal to the library.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "video_file.h"

namespace stage {

struct VideoFormat {
    std::string ending;                      // ".mp4"
    std::string codec;                       // as the settings name it
    std::string muxer;                       // ffmpeg's name of the file format
    std::string pixels;                      // ffmpeg's name of the pixel format
    std::string pixels_with_alpha = {};      // empty: no alpha
    bool key_and_fill = false;               // can be a fill or a key and, if it has alpha, premultiplied
    std::string field_flags = {};            // of the encoder for interlaced video; empty: it has none
    double most_frames_per_second = 1000.0;  // that players show
    std::vector<std::string> encoder;        // its name and arguments
};

const std::vector<VideoFormat>& video_formats();

/// The format for the ending of a name, in upper or lower case, and a codec, empty for the first; null if there is
/// none.
const VideoFormat* find_video_format(const std::filesystem::path& path, const std::string& codec = {});

/// Whether frames are sent with alpha.
bool sends_alpha(const VideoFormat& format, const VideoSettings& settings);

/// Rows of a picture that are sent: all, or those of its field.
int32_t sent_height(const VideoSettings& settings);

/// The whole command line: raw frames with 16 bits per channel on standard input, top row first, into `output`.
std::vector<std::string> ffmpeg_arguments(const VideoFormat& format, const VideoSettings& settings,
                                          const std::filesystem::path& output);

}  // namespace stage
