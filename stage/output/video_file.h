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

enum class VideoPart {
    kPicture,  // colour, with alpha where the format has it, else over black
    kFill,     // colour without alpha
    kKey,      // alpha as grey
};

enum class VideoFields {
    kNone,         // each picture is a frame
    kTopFirst,     // two pictures are a frame: the first has the upper line of each pair
    kBottomFirst,  // the first has the lower one
};

struct VideoSettings {
    int32_t width = 0;  // pixels
    int32_t height = 0;
    double frames_per_second = 25.0;  // rate of add_frame; with fields, the file has half this frame rate. 23.976,
                                      // 29.97, 59.94 and so on stand for multiples of 1000/1001
    VideoPart part = VideoPart::kPicture;
    bool premultiplied = false;  // colour × alpha instead of colour beside alpha
    VideoFields fields = VideoFields::kNone;
    std::string codec = {};  // for .mp4: "h264" or "h265"; empty: h264
};

/// The rate as a fraction: 25 is "25000/1000", 29.97 is "30000/1001".
STAGE_EXPORT std::string frame_rate_text(double frames_per_second);

/// True for names that end in one of video_endings().
STAGE_EXPORT bool is_video_name(const std::filesystem::path& path);

/// The text ".mp4, .mov, .webm, .webp, .gif".
STAGE_EXPORT std::string video_endings();

enum class VideoAlpha { kNone, kOnOrOff, kFull };

/// How much of the alpha videos of this ending can hold.
STAGE_EXPORT VideoAlpha video_alpha(const std::filesystem::path& path);

/// A video being written. The name's ending chooses the format:
///   .mp4   H.264 4:2:0 with 8 bits, or H.265 4:2:0 with 10, without alpha; pictures are over black
///   .mov   ProRes 4444 with 10 bits and alpha, straight or premultiplied
///   .webm  VP9 4:2:0 with 8 bits and straight alpha
///   .webp  animated WebP, lossy, with 8 bits and straight alpha
///   .gif   256 colours for each frame; a pixel is opaque from alpha 1/2 on, else transparent
/// H.264 and ProRes can be interlaced, from an even number of pictures. 4:2:0 needs an even width and height, and with
/// fields a height that is a multiple of 4. A fill and its key must be .mp4 or .mov. The same frames give the same
/// bytes with the same ffmpeg. The file appears under its name when finish() succeeds; an object destroyed before that
/// leaves no file. Move only.
class STAGE_EXPORT VideoFile {
  public:
    /// Errors: unknown ending; settings that the format does not support; no ffmpeg command.
    static Result<VideoFile> create(const std::filesystem::path& path, const VideoSettings& settings);

    VideoFile(VideoFile&&) noexcept;
    VideoFile& operator=(VideoFile&&) noexcept;
    ~VideoFile();

    /// Adds a picture of the video's size. If ffmpeg has ended early, the error quotes its last lines.
    Result<Done> add_frame(const DeepPicture& frame);
    /// Waits for ffmpeg and gives the file its name. No frame can be added afterwards.
    Result<Done> finish();

  private:
    struct Encoder;
    explicit VideoFile(std::unique_ptr<Encoder> encoder);
    std::unique_ptr<Encoder> encoder_;
};

}  // namespace stage
