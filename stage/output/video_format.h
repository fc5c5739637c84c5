// The ffmpeg command line for each video format. Internal to the library.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "video_file.h"

namespace stage {

struct VideoFormat {
    std::string ending;                      // ".mp4"
    std::string codec;                       // as in VideoSettings
    std::string muxer;                       // ffmpeg's name of the file format
    std::string pixels;                      // ffmpeg's name of the pixel format
    std::string pixels_with_alpha = {};      // empty: no alpha
    bool key_and_fill = false;               // supports fill, key and, if it has alpha, premultiplied alpha
    std::string field_flags = {};            // encoder flags for interlaced video; empty: not supported
    double most_frames_per_second = 1000.0;  // limit of common players
    std::vector<std::string> encoder;        // name and arguments of the encoder
};

const std::vector<VideoFormat>& video_formats();

/// The format for the ending of `path`, in upper or lower case, and a codec. Empty codec: the first format of the
/// ending. Null if there is none.
const VideoFormat* find_video_format(const std::filesystem::path& path, const std::string& codec = {});

/// True if frames are sent to ffmpeg with alpha.
bool sends_alpha(const VideoFormat& format, const VideoSettings& settings);

/// The number of rows that are sent per picture: all, or those of its field.
int32_t sent_height(const VideoSettings& settings);

/// The command line that encodes raw frames from standard input, 16 bits per channel and top row first, to `output`.
std::vector<std::string> ffmpeg_arguments(const VideoFormat& format, const VideoSettings& settings,
                                          const std::filesystem::path& output);

}  // namespace stage
