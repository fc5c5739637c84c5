// Writes video files through the ffmpeg command.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "stage/assets/picture.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct VideoSettings {
    int32_t width = 0;  // pixels
    int32_t height = 0;
    double frames_per_second = 25.0;  // 23.976, 29.97, 59.94 and so on stand for multiples of 1000/1001
};

/// The rate as a fraction: 25 is "25000/1000", 29.97 is "30000/1001".
STAGE_EXPORT std::string frame_rate_text(double frames_per_second);

/// True for names that end in .mp4, .mov or .webm.
STAGE_EXPORT bool is_video_name(const std::filesystem::path& path);

/// A video being written. The name's ending chooses the format: .mp4 is H.264 4:2:0 without alpha, over black, .mov is
/// ProRes 4444 with straight alpha, .webm is VP9 4:2:0 with straight alpha; 4:2:0 needs an even width and height. The
/// same frames give the same bytes with the same ffmpeg. The file appears under its name when finish() succeeds; an
/// object destroyed before that leaves no file. Move only.
class STAGE_EXPORT VideoFile {
  public:
    /// Error: another ending, a size or rate that the format cannot have, no ffmpeg command.
    static Result<VideoFile> create(const std::filesystem::path& path, const VideoSettings& settings);

    VideoFile(VideoFile&&) noexcept;
    VideoFile& operator=(VideoFile&&) noexcept;
    ~VideoFile();

    /// Adds a frame of the video's size. When ffmpeg has ended, the error quotes its last lines.
    Result<Done> add_frame(const DeepPicture& frame);
    /// Waits for ffmpeg and gives the file its name. No frame can be added afterwards.
    Result<Done> finish();

  private:
    struct Encoder;
    explicit VideoFile(std::unique_ptr<Encoder> encoder);
    std::unique_ptr<Encoder> encoder_;
};

}  // namespace stage
