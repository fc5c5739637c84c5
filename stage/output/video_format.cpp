#include "video_format.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "stage/file_ending.h"
#include "stage/frame_rate.h"

namespace stage {

namespace {

std::vector<VideoFormat> make_formats() {
    std::vector<VideoFormat> formats;
    // A low quantiser, since the faint gradients of smoke show steps at higher ones.
    formats.push_back({.ending = ".mp4",
                       .codec = "h264",
                       .muxer = "mp4",
                       .pixels = "yuv420p",
                       .key_and_fill = true,
                       .field_flags = "+ildct+ilme",
                       .encoder = {"libx264", "-preset", "fast", "-crf", "16", "-movflags", "+faststart"}});
    // x265 has its own options for threads and metadata. Apple's players accept only the tag hvc1.
    formats.push_back(
        {.ending = ".mp4",
         .codec = "h265",
         .muxer = "mp4",
         .pixels = "yuv420p10le",
         .key_and_fill = true,
         .encoder = {"libx265", "-preset", "fast", "-crf", "16", "-x265-params",
                     "log-level=error:info=0:pools=1:frame-threads=1", "-tag:v", "hvc1", "-movflags", "+faststart"}});
    formats.push_back({.ending = ".mov",
                       .codec = "prores",
                       .muxer = "mov",
                       .pixels = "yuv444p10le",
                       .pixels_with_alpha = "yuva444p10le",
                       .key_and_fill = true,
                       .field_flags = "+ildct",
                       .encoder = {"prores_ks", "-profile:v", "4444", "-alpha_bits", "16"}});
    // libvpx cannot combine alternate reference frames with alpha.
    formats.push_back({.ending = ".webm",
                       .codec = "vp9",
                       .muxer = "webm",
                       .pixels = "yuv420p",
                       .pixels_with_alpha = "yuva420p",
                       .encoder = {"libvpx-vp9", "-crf", "20", "-b:v", "0", "-auto-alt-ref", "0", "-deadline", "good",
                                   "-cpu-used", "4"}});
    formats.push_back({.ending = ".webp",
                       .codec = "webp",
                       .muxer = "webp",
                       .pixels = "bgra",
                       .pixels_with_alpha = "bgra",
                       .encoder = {"libwebp_anim", "-quality", "85", "-loop", "0"}});
    // Players show a frame for at least 1/50 s.
    formats.push_back({.ending = ".gif",
                       .codec = "gif",
                       .muxer = "gif",
                       .pixels = "pal8",
                       .pixels_with_alpha = "pal8",
                       .most_frames_per_second = 50.0,
                       .encoder = {"gif", "-loop", "0"}});
    return formats;
}

/// The filters between raw frames and the encoder. Error diffusion keeps faint gradients free of steps.
std::string conversion(const VideoFormat& format, const VideoSettings& settings) {
    if (format.codec == "gif")
        return "format=bgra,split[frames][colors];[colors]palettegen=stats_mode=single[palette];"
               "[frames][palette]paletteuse=new=1:alpha_threshold=128";
    if (format.codec == "webp") return "format=gbrap16le,zscale=dither=error_diffusion,format=gbrap,format=bgra";
    // To BT.709 (high definition television) in the limited range. The frames are marked with it, since players
    // otherwise guess from the size.
    return fmt::format(
        "format={},zscale=matrixin=gbr:rangein=full:primariesin=709:transferin=709:matrix=709:range=limited:"
        "primaries=709:transfer=709:filter=bicubic:dither=error_diffusion,format={}",
        sends_alpha(format, settings) ? "gbrap16le" : "gbrp16le",
        sends_alpha(format, settings) ? format.pixels_with_alpha : format.pixels);
}

bool is_top_first(const VideoSettings& settings) {
    return settings.fields == VideoFields::kTopFirst;
}

/// The filter that weaves two fields into a frame. Chroma is subsampled before, within each field.
std::string weaving(const VideoSettings& settings) {
    if (settings.fields == VideoFields::kNone) return "";
    return is_top_first(settings) ? ",weave=first_field=top" : ",weave=first_field=bottom";
}

}  // namespace

const std::vector<VideoFormat>& video_formats() {
    static const std::vector<VideoFormat> formats = make_formats();
    return formats;
}

const VideoFormat* find_video_format(const std::filesystem::path& path, const std::string& codec) {
    const std::string ending = file_ending(path);
    const auto found = std::ranges::find_if(video_formats(), [&](const VideoFormat& format) {
        return format.ending == ending && (codec.empty() || format.codec == codec);
    });
    return found != video_formats().end() ? &*found : nullptr;
}

bool sends_alpha(const VideoFormat& format, const VideoSettings& settings) {
    return settings.part == VideoPart::kPicture && !format.pixels_with_alpha.empty();
}

int32_t sent_height(const VideoSettings& settings) {
    return settings.fields == VideoFields::kNone ? settings.height : settings.height / 2;
}

std::string frame_rate_text(double frames_per_second) {
    const double exact = exact_frame_rate(frames_per_second);
    const double rounded = std::round(exact * 1001.0);
    const bool is_television = exact != std::round(exact) && std::abs(exact * 1001.0 - rounded) < 1e-6;
    return is_television ? fmt::format("{:.0f}/1001", rounded) : fmt::format("{:.0f}/1000", exact * 1000.0);
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
                                          sends_alpha(format, settings) ? "rgba64le" : "rgb48le",
                                          "-video_size",
                                          fmt::format("{}x{}", settings.width, sent_height(settings)),
                                          "-framerate",
                                          frame_rate_text(settings.frames_per_second),
                                          "-i",
                                          "pipe:0",
                                          "-filter_threads",
                                          "1",
                                          "-vf",
                                          conversion(format, settings) + weaving(settings),
                                          "-c:v"};
    arguments.insert(arguments.end(), format.encoder.begin(), format.encoder.end());
    const bool interlaced = settings.fields != VideoFields::kNone;
    if (interlaced && format.codec == "h264")
        arguments.insert(arguments.end(), {"-x264-params", is_top_first(settings) ? "tff=1" : "bff=1"});
    arguments.insert(arguments.end(), {"-flags:v", "+bitexact" + (interlaced ? format.field_flags : "")});
    for (const char* argument : {"-threads", "1", "-map_metadata", "-1", "-fflags", "+bitexact", "-f"})
        arguments.emplace_back(argument);
    arguments.push_back(format.muxer);
    arguments.push_back("file:" + output.string());  // with the prefix, a colon in the name does not start a protocol
    return arguments;
}

}  // namespace stage
