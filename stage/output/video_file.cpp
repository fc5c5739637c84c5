#include "video_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <utility>

#include "child_process.h"
#include "video_format.h"
#include "whole_file.h"

namespace stage {

static_assert(std::endian::native == std::endian::little, "frames are sent to ffmpeg in memory order");

constexpr size_t kQuotedLines = 5;

struct VideoFile::Encoder {
    std::filesystem::path path;
    VideoSettings settings;
    const VideoFormat* format;
    ChildProcess ffmpeg;
    std::vector<uint16_t> frame = {};  // as sent: top row first, RGBA or RGB; only every other row for a field
    int64_t frame_count = 0;           // number of sent frames or fields
    bool finished = false;

    ~Encoder() {
        if (finished) return;
        { const ChildProcess ended = std::move(ffmpeg); }  // ends ffmpeg first, since it could create the file again
        discard_partial(path);
    }

    /// ended: the result of ChildProcess::wait.
    Error failure(const Result<Done>& ended) const {
        discard_partial(path);
        const std::string lines = ffmpeg.last_lines(kQuotedLines);
        if (lines.find("Unknown encoder") != std::string::npos)
            return Error{fmt::format("{}: this ffmpeg has no encoder {}; Debian's package ffmpeg has it", path.string(),
                                     format->encoder[0])};
        return Error{fmt::format("{}: ffmpeg {}{}{}", path.string(), ended ? "ended too early" : ended.error().message,
                                 lines.empty() ? "" : ":\n", lines)};
    }
};

namespace {

std::string codecs_of(const std::filesystem::path& path) {
    std::string text;
    for (const VideoFormat& format : video_formats())
        if (format.ending == find_video_format(path)->ending) text += (text.empty() ? "" : " or ") + format.codec;
    return text;
}

Result<Done> check_settings(const std::filesystem::path& path, const VideoFormat* format,
                            const VideoSettings& settings) {
    const auto wrong = [&path](const std::string& problem) { return Error{path.string() + ": " + problem}; };
    if (!is_video_name(path)) return wrong(fmt::format("the name of a video must end in one of {}", video_endings()));
    if (format == nullptr)
        return wrong(fmt::format("{} files do not take the codec {}, but {}", path.extension().string(), settings.codec,
                                 codecs_of(path)));
    if (settings.part != VideoPart::kPicture && !format->key_and_fill)
        return wrong("a fill and its key must be .mp4 or .mov files");
    if (settings.premultiplied && !format->key_and_fill)
        return wrong(
            fmt::format("alpha in {} files is straight; .mov and .exr files can be premultiplied", format->ending));
    const bool interlaced = settings.fields != VideoFields::kNone;
    if (interlaced && format->field_flags.empty())
        return wrong("interlaced videos must be .mov files, or .mp4 files with the codec h264");
    if (settings.width < 1 || settings.height < 1)
        return wrong(fmt::format("{} x {} pixels: both must be at least 1", settings.width, settings.height));
    const int32_t halved = format->pixels.starts_with("yuv420") ? 2 : 1;  // chroma is subsampled
    const int32_t height_step = interlaced ? halved * 2 : halved;
    if (settings.width % halved != 0 || settings.height % height_step != 0)
        return wrong(fmt::format("{} x {} pixels: in {}{} files the width must be a multiple of {}, the height of {}",
                                 settings.width, settings.height, interlaced ? "interlaced " : "", format->ending,
                                 halved, height_step));
    if (!(settings.frames_per_second >= 0.001 && settings.frames_per_second <= format->most_frames_per_second))
        return wrong(fmt::format("{:.10g} frames per second: in {} files 0.001 to {}", settings.frames_per_second,
                                 format->ending, format->most_frames_per_second));
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    if (std::error_code code; !std::filesystem::is_directory(folder, code))
        return wrong(fmt::format("there is no folder {}", folder.string()));
    return Done{};
}

uint16_t multiply(uint32_t color, uint32_t alpha) {
    constexpr uint32_t kMost = 65535;
    return static_cast<uint16_t>((color * alpha + kMost / 2) / kMost);
}

/// Converts a row of pixels to the form that is sent: three or four channels per pixel.
void convert_row(const uint16_t* rgba, int32_t width, const VideoFormat& format, const VideoSettings& settings,
                 uint16_t* out) {
    const bool alpha = sends_alpha(format, settings);
    if (alpha && !settings.premultiplied) {
        std::copy_n(rgba, static_cast<size_t>(width) * 4, out);
        return;
    }
    const bool over_black = settings.premultiplied || (settings.part == VideoPart::kPicture && !alpha);
    for (int32_t x = 0; x < width; ++x, rgba += 4) {
        for (int channel = 0; channel < 3; ++channel) {
            if (settings.part == VideoPart::kKey)
                *out++ = rgba[3];
            else
                *out++ = over_black ? multiply(rgba[channel], rgba[3]) : rgba[channel];
        }
        if (alpha) *out++ = rgba[3];
    }
}

bool is_lower_field(const VideoSettings& settings, int64_t picture) {
    return (picture % 2 == 1) == (settings.fields == VideoFields::kTopFirst);
}

}  // namespace

bool is_video_name(const std::filesystem::path& path) {
    return find_video_format(path) != nullptr;
}

std::string video_endings() {
    std::string text;
    std::string last;
    for (const VideoFormat& format : video_formats())
        if (format.ending != std::exchange(last, format.ending)) text += (text.empty() ? "" : ", ") + format.ending;
    return text;
}

VideoAlpha video_alpha(const std::filesystem::path& path) {
    const VideoFormat* format = find_video_format(path);
    if (format == nullptr || format->pixels_with_alpha.empty()) return VideoAlpha::kNone;
    return format->codec == "gif" ? VideoAlpha::kOnOrOff : VideoAlpha::kFull;
}

Result<VideoFile> VideoFile::create(const std::filesystem::path& path, const VideoSettings& settings) {
    const VideoFormat* format = find_video_format(path, settings.codec);
    if (const Result<Done> checked = check_settings(path, format, settings); !checked) return checked.error();
    auto ffmpeg = ChildProcess::start(ffmpeg_arguments(*format, settings, begin_partial(path)));
    if (!ffmpeg) {
        discard_partial(path);
        return Error{path.string() + ": " + ffmpeg.error().message};
    }
    return VideoFile(std::unique_ptr<Encoder>(new Encoder{path, settings, format, std::move(*ffmpeg)}));
}

Result<Done> VideoFile::add_frame(const DeepPicture& frame) {
    Encoder& encoder = *encoder_;
    const VideoSettings& settings = encoder.settings;
    if (frame.width != settings.width || frame.height != settings.height)
        return Error{fmt::format("{}: a frame of {} x {} pixels; frames of this video must be {} x {}",
                                 encoder.path.string(), frame.width, frame.height, settings.width, settings.height)};
    const size_t row_in = static_cast<size_t>(frame.width) * 4;
    const size_t row_out = static_cast<size_t>(frame.width) * (sends_alpha(*encoder.format, settings) ? 4 : 3);
    const auto height = static_cast<size_t>(frame.height);
    const auto rows = static_cast<size_t>(sent_height(settings));
    const size_t first = rows < height && is_lower_field(settings, encoder.frame_count) ? 1 : 0;
    encoder.frame.resize(row_out * rows);
    for (size_t row = 0; row < rows; ++row)
        convert_row(&frame.channels[(height - 1 - first - row * (height / rows)) * row_in], frame.width,
                    *encoder.format, settings, &encoder.frame[row * row_out]);
    if (encoder.finished) return Error{encoder.path.string() + ": the video is already finished"};
    ++encoder.frame_count;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(encoder.frame.data());
    if (encoder.ffmpeg.feed({bytes, encoder.frame.size() * sizeof(uint16_t)})) return Done{};
    encoder.finished = true;
    return encoder.failure(encoder.ffmpeg.wait());  // ffmpeg ended early; its exit status says why
}

Result<Done> VideoFile::finish() {
    Encoder& encoder = *encoder_;
    if (encoder.finished) return Error{encoder.path.string() + ": the video is already finished"};
    encoder.finished = true;
    if (const Result<Done> ended = encoder.ffmpeg.wait(); !ended) return encoder.failure(ended);
    if (encoder.frame_count > 0) return publish_partial(encoder.path);
    discard_partial(encoder.path);
    return Error{encoder.path.string() + ": a video without frames cannot be written"};
}

VideoFile::VideoFile(std::unique_ptr<Encoder> encoder) : encoder_(std::move(encoder)) {}
VideoFile::VideoFile(VideoFile&&) noexcept = default;
VideoFile& VideoFile::operator=(VideoFile&&) noexcept = default;
VideoFile::~VideoFile() = default;

}  // namespace stage
