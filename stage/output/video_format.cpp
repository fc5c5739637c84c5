#include "video_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>

#include "stage/frame_rate.h"

namespace stage {

const std::vector<VideoFormat>& video_formats() {
    static const std::vector<VideoFormat> formats = {
        // A low quantiser, since the faint gradients of smoke show steps at higher ones.
        {".mp4",
         "mp4",
         "yuv420p",
         false,
         true,
         {"libx264", "-preset", "fast", "-crf", "16", "-movflags", "+faststart"}},
        {".mov", "mov", "yuva444p10le", true, false, {"prores_ks", "-profile:v", "4444", "-alpha_bits", "16"}},
        // This encoder cannot combine alternate reference frames with alpha.
        {".webm",
         "webm",
         "yuva420p",
         true,
         true,
         {"libvpx-vp9", "-crf", "20", "-b:v", "0", "-auto-alt-ref", "0", "-deadline", "good", "-cpu-used", "4"}},
    };
    return formats;
}

const VideoFormat* find_video_format(const std::filesystem::path& path) {
    std::string ending = path.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto found = std::ranges::find(video_formats(), ending, &VideoFormat::ending);
    return found != video_formats().end() ? &*found : nullptr;
}

std::string frame_rate_text(double frames_per_second) {
    const double exact = exact_frame_rate(frames_per_second);
    const double rounded = std::round(exact * 1001.0);
    const bool is_television = exact != std::round(exact) && std::abs(exact * 1001.0 - rounded) < 1e-6;
    return is_television ? fmt::format("{:.0f}/1001", rounded) : fmt::format("{:.0f}/1000", exact * 1000.0);
}

/// Converts to BT.709 (high definition television) in the limited range and marks the frames with it, since players
/// otherwise guess from the size. Error diffusion keeps faint gradients free of steps.
std::string conversion(const VideoFormat& format) {
    return fmt::format(
        "format={},zscale=matrixin=gbr:rangein=full:primariesin=709:transferin=709:matrix=709:range=limited:"
        "primaries=709:transfer=709:filter=bicubic:dither=error_diffusion,format={}",
        format.alpha ? "gbrap16le" : "gbrp16le", format.pixels);
}

std::vector<std::string> ffmpeg_arguments(const VideoFormat& format, const VideoSettings& settings,
                                          const std::filesystem::path& output) {
    // One thread, no version and no date: the same frames give the same bytes.
    std::vector<std::string> arguments = {"ffmpeg",
                                          "-nostdin",
                                          "-hide_banner",
                                          "-xerror",
                                          "-loglevel",
                                          "error",
                                          "-y",
                                          "-f",
                                          "rawvideo",
                                          "-pix_fmt",
                                          format.alpha ? "rgba64le" : "rgb48le",
                                          "-video_size",
                                          fmt::format("{}x{}", settings.width, settings.height),
                                          "-framerate",
                                          frame_rate_text(settings.frames_per_second),
                                          "-i",
                                          "pipe:0",
                                          "-filter_threads",
                                          "1",
                                          "-vf",
                                          conversion(format),
                                          "-c:v"};
    arguments.insert(arguments.end(), format.encoder.begin(), format.encoder.end());
    for (const char* argument :
         {"-threads", "1", "-map_metadata", "-1", "-fflags", "+bitexact", "-flags:v", "+bitexact", "-f"})
        arguments.emplace_back(argument);
    arguments.push_back(format.muxer);
    arguments.push_back("file:" +
                        output.string());  // the prefix keeps a colon in the name from being read as a protocol
    return arguments;
}

}  // namespace stage
