// Numbered frames, videos and progress.
#include <gmock/gmock.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "stage/output/color_bleed.h"
#include "stage/output/contact_sheet.h"
#include "stage/output/exr_file.h"
#include "stage/output/frame_names.h"
#include "stage/output/progress.h"
#include "stage/output/video_file.h"
#include "temporary_folder.h"

namespace {

using stage::DeepPicture;
using stage::VideoFile;
using testing::HasSubstr;

TEST(FrameNames, FollowTheirPattern) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"frames/%04d.png", 7, "frames/0007.png"},
        {"a%3d", 5, "a  5"},
        {"%04d", 123456, "123456"},
        {"100%%-%02d", 3, "100%-03"},
    };
    for (const auto& [pattern, number, name] : cases) EXPECT_EQ(name, stage::frame_name(pattern, number)->string());
    EXPECT_FALSE(stage::frame_name("%04d", -1));
    for (const char* wrong : {"still.png", "%d-%d", "%s", "%", "%0d", "%04", "%012d", "%n%04d"})
        EXPECT_FALSE(stage::frame_name(wrong, 1)) << wrong;
}

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 48;
constexpr int kPictures = 4;

/// A test pixel with straight alpha, 0…1. Colour increases to the right, alpha to the bottom; pictures differ in green.
std::array<double, 4> gradient(int picture, int32_t x, int32_t y) {
    return {0.2 + 0.6 * x / kWidth, 0.3 * picture, 0.4, (y + 0.5) / kHeight};
}

DeepPicture gradient_frame(int frame) {
    DeepPicture picture{kWidth, kHeight, {}};
    for (int32_t y = kHeight; y-- > 0;)  // the bottom row first
        for (int32_t x = 0; x < kWidth; ++x)
            for (const double value : gradient(frame, x, y))
                picture.channels.push_back(static_cast<uint16_t>(std::lround(value * 65535)));
    return picture;
}

stage::Result<stage::Done> write_video(const std::filesystem::path& path, const stage::VideoSettings& settings) {
    auto video = VideoFile::create(path, settings);
    if (!video) return video.error();
    for (int i = 0; i < kPictures; ++i)
        if (auto added = video->add_frame(gradient_frame(i)); !added) return added.error();
    return video->finish();
}

using Pixel = std::array<double, 4>;
Pixel unchanged(Pixel p) {
    return p;
}
Pixel multiplied(Pixel p) {
    return {p[0] * p[3], p[1] * p[3], p[2] * p[3], p[3]};
}
Pixel without_alpha(Pixel p) {
    return {p[0], p[1], p[2], 1};
}
Pixel over_black(Pixel p) {
    return without_alpha(multiplied(p));
}
Pixel only_alpha(Pixel p) {
    return {p[3], p[3], p[3], 1};
}
Pixel all_or_nothing(Pixel p) {
    return p[3] < 128 / 255.0 ? Pixel{} : without_alpha(p);
}

// Commands that decode a video to RGBA with 16 bits per channel. ffmpeg cannot read animated WebP.
constexpr const char* kDecode =
    "ffmpeg -nostdin -v error -i $f -vf zscale=matrix=gbr:range=full,format='gbrp16|gbrap16' ";
constexpr const char* kDecodeVp9 =
    "ffmpeg -nostdin -v error -c:v libvpx-vp9 -i $f -vf zscale=matrix=gbr:range=full,format='gbrp16|gbrap16' ";
// Decodes one field. Chroma is stored per field.
constexpr const char* kDecodeTop =
    "ffmpeg -nostdin -v error -i $f "
    "-vf separatefields,zscale=matrix=gbr:range=full,format='gbrp16|gbrap16',weave=first_field=top ";
constexpr const char* kDecodeBottom =
    "ffmpeg -nostdin -v error -i $f "
    "-vf separatefields,zscale=matrix=gbr:range=full,format='gbrp16|gbrap16',weave=first_field=bottom ";
constexpr const char* kDecodeGif = "ffmpeg -nostdin -v error -i $f ";
constexpr const char* kDecodeWebp =
    "/usr/bin/python3 -c 'import PIL.Image, PIL.ImageSequence, sys\n"
    "for frame in PIL.ImageSequence.Iterator(PIL.Image.open(sys.argv[1])):\n"
    "    sys.stdout.buffer.write(bytes(v for byte in frame.convert(\"RGBA\").tobytes() for v in (byte, byte)))' $f #";

struct VideoCase {
    const char* name;
    stage::VideoSettings settings;  // size and rate are the same for all
    const char* probed;             // codec, pixel format, range, matrix, transfer, primaries, fields
    const char* decode;
    Pixel (*expected)(Pixel);
    double error;  // 1/255, mean of all pixels and channels
};

const VideoCase kVideoCases[] = {
    {"a.mp4", {}, "h264,yuv420p,tv,bt709,bt709,bt709,progressive", kDecode, over_black, 0.75},
    {"h265.mp4", {.codec = "h265"}, "hevc,yuv420p10le,tv,bt709,bt709,bt709,progressive", kDecode, over_black, 0.5},
    {"a.mov", {}, "prores,yuva444p12le,tv,bt709,bt709,bt709,progressive", kDecode, unchanged, 0.15},
    {"multiplied.mov",
     {.premultiplied = true},
     "prores,yuva444p12le,tv,bt709,bt709,bt709,progressive",
     kDecode,
     multiplied,
     0.15},
    {"a.WEBM", {}, "vp9,yuv420p,tv,bt709,bt709,bt709,progressive", kDecodeVp9, unchanged, 0.55},
    {"a.webp", {}, nullptr, kDecodeWebp, unchanged, 1.7},
    {"a.gif", {}, "gif,bgra,unknown,unknown,unknown,unknown,unknown", kDecodeGif, all_or_nothing, 0.2},
    {"top.mp4",
     {.fields = stage::VideoFields::kTopFirst},
     "h264,yuv420p,tv,bt709,bt709,bt709,tt",
     kDecodeTop,
     over_black,
     0.8},
    {"bottom.mp4",
     {.fields = stage::VideoFields::kBottomFirst},
     "h264,yuv420p,tv,bt709,bt709,bt709,bb",
     kDecodeBottom,
     over_black,
     0.8},
    {"bottom.mov",
     {.fields = stage::VideoFields::kBottomFirst},
     "prores,yuva444p12le,tv,bt709,bt709,bt709,bt",
     kDecode,
     unchanged,
     0.15},
    {"fill.mp4",
     {.part = stage::VideoPart::kFill},
     "h264,yuv420p,tv,bt709,bt709,bt709,progressive",
     kDecode,
     without_alpha,
     0.7},
    {"fill.mov",
     {.part = stage::VideoPart::kFill, .premultiplied = true},
     "prores,yuv444p12le,tv,bt709,bt709,bt709,progressive",
     kDecode,
     over_black,
     0.15},
    {"key.mp4",
     {.part = stage::VideoPart::kKey},
     "h264,yuv420p,tv,bt709,bt709,bt709,progressive",
     kDecode,
     only_alpha,
     0.55},
};

// The output of a shell command, in which $f is the file.
std::string printed(const std::string& command, const std::filesystem::path& file) {
    const TemporaryFolder folder;
    const auto output = folder / "output";
    const std::string line = "exec >'" + output.string() + "'; f='" + file.string() + "'; " + command;
    EXPECT_EQ(0, std::system(line.c_str())) << line;
    return file_bytes(output);
}

class Videos : public testing::TestWithParam<VideoCase> {};

TEST_P(Videos, HaveTheirFormatAndEqualBytesEachTime) {
    const VideoCase& expected = GetParam();
    SCOPED_TRACE(expected.name);
    stage::VideoSettings settings = expected.settings;
    settings.width = kWidth;
    settings.height = kHeight;
    const TemporaryFolder folder;
    for (const std::string part : {"1", "2"}) {
        std::filesystem::create_directory(folder / part);
        const auto written = write_video(folder / part / expected.name, settings);
        ASSERT_TRUE(written) << written.error().message;
    }
    const auto file = folder / "1" / expected.name;
    EXPECT_EQ(file_bytes(file), file_bytes(folder / "2" / expected.name));
    if (expected.probed != nullptr) {
        EXPECT_EQ(
            expected.probed + std::string("\n"),
            printed("ffprobe -v error -of csv=p=0 -show_entries stream=codec_name,pix_fmt,color_range,color_space,"
                    "color_transfer,color_primaries,field_order $f",
                    file));
    }
    const std::string frames = printed(expected.decode + std::string("-f rawvideo -pix_fmt rgba64le -"), file);
    const bool interlaced = settings.fields != stage::VideoFields::kNone;
    const int frame_count = interlaced ? kPictures / 2 : kPictures;
    ASSERT_EQ(static_cast<size_t>(frame_count) * kWidth * kHeight * 8, frames.size());
    const auto* decoded = reinterpret_cast<const uint16_t*>(frames.data());
    double error = 0;
    for (int frame = 0; frame < frame_count; ++frame)
        for (int32_t y = 0; y < kHeight; ++y) {
            const int field = (y % 2 == 0) == (settings.fields == stage::VideoFields::kTopFirst) ? 0 : 1;
            const int picture = interlaced ? 2 * frame + field : frame;
            for (int32_t x = 0; x < kWidth; ++x) {
                const Pixel pixel = expected.expected(gradient(picture, x, y));
                const bool visible = pixel[3] > 0.02;  // formats may drop what cannot be seen
                for (size_t i = 0; i < 4; ++i, ++decoded)
                    if (visible || i == 3) error += std::abs(pixel[i] - *decoded / 65535.0);
            }
        }
    EXPECT_LT(error / (frame_count * kWidth * kHeight * 4) * 255, expected.error);
}

INSTANTIATE_TEST_SUITE_P(Formats, Videos, testing::ValuesIn(kVideoCases));

TEST(Video, EveryFaultIsNamedAndLeavesNoFile) {
    const TemporaryFolder folder;
    const stage::VideoSettings good{kWidth, kHeight, 25.0};
    const std::tuple<const char*, stage::VideoSettings, const char*> cases[] = {
        {"a.avi", good, "must end in one of .mp4, .mov, .webm, .webp, .gif"},
        {"a.mov", {0, kHeight}, "0 x 48 pixels: both must be at least 1"},
        {"a.webm", {kWidth, 47}, "64 x 47 pixels: in .webm files the width must be a multiple of 2, the height of 2"},
        {"a.mp4", {kWidth, kHeight, 0.0}, "0 frames per second: in .mp4 files 0.001 to 1000"},
        {"a.gif", {kWidth, kHeight, 60.0}, "60 frames per second: in .gif files 0.001 to 50"},
        {"a.mov", {.width = 2, .height = 2, .codec = "h265"}, ".mov files do not take the codec h265, but prores"},
        {"a.webm", {.width = 2, .height = 2, .premultiplied = true}, "alpha in .webm files is straight"},
        {"a.gif", {.width = 2, .height = 2, .part = stage::VideoPart::kKey}, "must be .mp4 or .mov files"},
        {"a.mp4",
         {.width = 2, .height = 6, .fields = stage::VideoFields::kTopFirst},
         "2 x 6 pixels: in interlaced .mp4 files the width must be a multiple of 2, the height of 4"},
        {"a.mp4",
         {.width = 2, .height = 4, .fields = stage::VideoFields::kTopFirst, .codec = "h265"},
         "interlaced videos must be .mov files, or .mp4 files with the codec h264"},
        {"none/a.mp4", good, "there is no folder"},
    };
    for (const auto& [name, settings, message] : cases)
        EXPECT_THAT(VideoFile::create(folder / name, settings).error().message,
                    testing::AllOf(HasSubstr(std::string(name) + ": "), HasSubstr(message)));
    auto video = VideoFile::create(folder / "a.mp4", good);
    ASSERT_TRUE(video) << video.error().message;
    EXPECT_THAT(video->add_frame({2, 2, std::vector<uint16_t>(16)}).error().message,
                HasSubstr("2 x 2 pixels; frames of this video must be 64 x 48"));
    EXPECT_THAT(video->finish().error().message, HasSubstr("without frames"));
    EXPECT_THAT(video->finish().error().message, HasSubstr("already finished"));
    EXPECT_TRUE(folder.is_empty());
}

class VideoCommand : public testing::Test {
  protected:
    /// Makes `script` the only command in PATH.
    void put_ffmpeg(const std::string& script) {
        write_bytes(commands / "ffmpeg", "#!/bin/sh\n" + script);
        std::filesystem::permissions(commands / "ffmpeg", std::filesystem::perms::owner_all);
    }
    void SetUp() override { setenv("PATH", commands.path().c_str(), 1); }
    void TearDown() override { setenv("PATH", path.c_str(), 1); }

    const std::string path = std::getenv("PATH");
    const TemporaryFolder commands;
    const TemporaryFolder folder;
    const stage::VideoSettings settings{kWidth, kHeight, 25.0};
};

TEST_F(VideoCommand, IfMissingItsPackageIsNamed) {
    EXPECT_THAT(VideoFile::create(folder / "a.mp4", settings).error().message,
                HasSubstr("a.mp4: there is no ffmpeg command; install the package ffmpeg"));
}

TEST_F(VideoCommand, IfItFailsItsLastLinesAreQuoted) {
    put_ffmpeg("for i in 1 2 3 4 5 6 7; do echo \"line $i\" >&2; done\nexit 3\n");
    auto video = VideoFile::create(folder / "a.mp4", settings);
    ASSERT_TRUE(video);
    std::string message;
    for (int i = 0; i < 1000 && message.empty(); ++i)  // it takes a while to end
        if (const auto added = video->add_frame(gradient_frame(0)); !added) message = added.error().message;
    EXPECT_THAT(message,
                testing::EndsWith("a.mp4: ffmpeg failed with exit status 3:\nline 3\nline 4\nline 5\nline 6\nline 7"));
    EXPECT_TRUE(folder.is_empty());
}

TEST_F(VideoCommand, IfItFailsAtTheEndNoFileIsLeft) {
    const std::tuple<const char*, decltype(SIG_DFL), const char*> cases[] = {
        {"echo full >&2; exit 1", SIG_DFL, "ffmpeg failed with exit status 1:\nfull"},
        {"echo \"Unknown encoder 'libx264'\" >&2; exit 1", SIG_DFL,
         "a.mp4: this ffmpeg has no encoder libx264; Debian's"},
        {"kill -9 $$", SIG_DFL, "ffmpeg was ended by signal 9 (Killed)"},
        {"exit 1", SIG_IGN, "ffmpeg failed: its exit status is not known (No child processes)"},
    };
    for (const auto& [end, child_signal, message] : cases) {
        put_ffmpeg(std::string("for last; do :; done\necho some >\"${last#file:}\"\nwhile read -r line; do :; done\n") +
                   end + "\n");
        const auto before = std::signal(SIGCHLD, child_signal);
        const auto written = write_video(folder / "a.mp4", settings);
        std::signal(SIGCHLD, before);
        ASSERT_FALSE(written) << message;
        EXPECT_THAT(written.error().message,
                    testing::AllOf(HasSubstr(message), testing::Not(testing::EndsWith(":\n"))));
        EXPECT_TRUE(folder.is_empty()) << message;
    }
}

TEST(Exr, KeepsEachHalfAndTexts) {
    // 1, 0.5, 2, 0.25 as half floats. The top row is the second one.
    const stage::DrawnPicture picture{1, 2, {0x3c00, 0x3800, 0x4000, 0x3400, 0, 0, 0, 0x3c00}};
    const TemporaryFolder folder;
    const auto file = folder / "a.exr";
    ASSERT_TRUE(stage::write_exr(file, picture, {{"Scene", "fire.toml"}}));
    EXPECT_EQ("gbrapf32le,fire.toml\n",
              printed("ffprobe -v error -of csv=p=0 -show_entries frame=pix_fmt:frame_tags=Scene $f", file));
    const std::string planes = printed("ffmpeg -v error -i $f -f rawvideo -", file);
    std::vector<float> numbers(8);
    ASSERT_EQ(numbers.size() * sizeof(float), planes.size());
    std::memcpy(numbers.data(), planes.data(), planes.size());
    EXPECT_THAT(numbers, testing::ElementsAre(0, 0.5f, 0, 2, 0, 1, 1, 0.25f)) << "green, blue, red, alpha";
    EXPECT_THAT(stage::write_exr(folder / "none/a.exr", picture).error().message,
                HasSubstr("a.exr: cannot be written"));
}

TEST(ContactSheet, HoldsSmallPicturesInReadingOrder) {
    constexpr uint16_t kFull = 65535;
    // Two rows of four pixels, the bottom row first. One of the four left pixels has alpha, and all right ones have.
    DeepPicture picture{4, 2, std::vector<uint16_t>(4 * 2 * 4)};
    const auto set = [&picture](size_t pixel, std::array<uint16_t, 4> color) {
        std::copy_n(color.data(), 4, &picture.channels[pixel * 4]);
    };
    set(0, {100, 200, 300, kFull});
    for (const size_t pixel : {2, 3}) set(pixel, {0, 0, 0, kFull});
    for (const size_t pixel : {6, 7}) set(pixel, {1000, 0, 0, kFull});
    DeepPicture sheet = stage::make_sheet(2, 2, 4, 2);
    stage::place_in_sheet(sheet, 2, 2, 1, picture);
    EXPECT_EQ(4, sheet.width);
    EXPECT_EQ(2, sheet.height);
    std::vector<uint16_t> expected(4 * 2 * 4);
    const uint16_t cell[] = {100, 200, 300, (kFull + 2) / 4, 500, 0, 0, kFull};
    std::copy_n(cell, 8, &expected[(4 + 2) * 4]);  // the second of the top row
    EXPECT_EQ(expected, sheet.channels);
    EXPECT_EQ(255, stage::to_bytes(sheet).bytes[(4 + 3) * 4 + 3]);
    EXPECT_EQ(2, stage::to_bytes(sheet).bytes[(4 + 3) * 4]) << "500 / 257";
}

TEST(ColorBleed, ReachesSixteenStepsIntoTransparentPixels) {
    DeepPicture picture{40, 3, std::vector<uint16_t>(40 * 3 * 4)};
    const auto pixel = [&picture](size_t x, size_t y) { return &picture.channels[(y * 40 + x) * 4]; };
    const auto color = [&pixel](size_t x, size_t y) {
        return std::array{pixel(x, y)[0], pixel(x, y)[1], pixel(x, y)[2], pixel(x, y)[3]};
    };
    const std::array<uint16_t, 4> red{9, 0, 0, 1}, blue{0, 0, 7, 65535};
    std::copy_n(red.data(), 4, pixel(17, 1));
    std::copy_n(blue.data(), 4, pixel(20, 2));
    stage::bleed_colors(picture);
    using Color = std::array<uint16_t, 4>;
    EXPECT_EQ(red, color(17, 1));
    EXPECT_EQ(blue, color(20, 2));
    EXPECT_EQ((Color{9, 0, 0, 0}), color(17, 0)) << "below";
    EXPECT_EQ((Color{9, 0, 0, 0}), color(1, 1)) << "16 steps";
    EXPECT_EQ((Color{0, 0, 0, 0}), color(0, 1)) << "17 steps";
    EXPECT_EQ((Color{0, 0, 7, 0}), color(20, 1)) << "nearer to blue";
    EXPECT_EQ((Color{0, 0, 7, 0}), color(36, 2)) << "16 steps";
    EXPECT_EQ((Color{0, 0, 0, 0}), color(36, 1)) << "17 steps";
    const DeepPicture once = picture;
    stage::bleed_colors(picture);
    EXPECT_EQ(once.channels, picture.channels);
}

TEST(Video, RatesAreExact) {
    const std::pair<double, const char*> cases[] = {
        {12.5, "12500/1000"}, {30.0, "30000/1000"}, {29.97, "30000/1001"}, {59.94006, "60000/1001"}};
    for (const auto& [rate, text] : cases) EXPECT_EQ(text, stage::frame_rate_text(rate));
}

TEST(Progress, ShowsRateAndTimeLeft) {
    const std::tuple<int, int, double, const char*> cases[] = {
        {0, 100, 3.0, "frame 0/100"},
        {30, 100, 2.5, "frame 30/100, 12.0 frames/s, 5.8 s left"},
        {1, 151, 1.0, "frame 1/151, 1.0 frames/s, 2:30 min left"},
        {1, 7201, 1.0, "frame 1/7201, 1.0 frames/s, 2:00:00 h left"},
        {100, 100, 2.0, "frame 100/100, 50.0 frames/s, took 2.0 s"},
    };
    for (const auto& [done, total, seconds, text] : cases) EXPECT_EQ(text, stage::progress_text(done, total, seconds));
}

}  // namespace
