// Numbered frames, videos and progress.
#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>

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

/// Left half red, right half transparent; the bottom rows, as many as the frame's number, are blue.
DeepPicture video_frame(int number) {
    DeepPicture frame{kWidth, kHeight, {}};
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x)
            for (const int value : {y < number ? 0 : 200, 0, y < number ? 200 : 0, x < kWidth / 2 ? 255 : 0})
                frame.channels.push_back(static_cast<uint16_t>(257 * value));
    return frame;
}

stage::Result<stage::Done> write_video(const std::filesystem::path& path, const stage::VideoSettings& settings) {
    auto video = VideoFile::create(path, settings);
    if (!video) return video.error();
    for (int i = 0; i < 3; ++i)
        if (auto added = video->add_frame(video_frame(16 * i)); !added) return added.error();
    return video->finish();
}

struct VideoCase {
    const char* name;
    const char* decoder;
    bool alpha;
};

class Videos : public testing::TestWithParam<VideoCase> {};

TEST_P(Videos, HoldTheirFramesAndRepeatToTheByte) {
    const auto& [name, decoder, alpha] = GetParam();
    const TemporaryFolder folder;
    for (const std::string part : {"1", "2"}) {
        std::filesystem::create_directory(folder / part);
        const auto written = write_video(folder / part / name, {kWidth, kHeight, 25.0});
        ASSERT_TRUE(written) << written.error().message;
    }
    EXPECT_EQ(file_bytes(folder / "1" / name), file_bytes(folder / "2" / name));

    const std::string command = "cd '" + folder.path().string() + "' && ffmpeg -nostdin -loglevel error " + decoder +
                                " -i 1/" + name + " -f rawvideo -pix_fmt rgba raw";
    ASSERT_EQ(0, std::system(command.c_str()));
    const std::string frames = file_bytes(folder / "raw");
    constexpr size_t kFrameBytes = size_t{kWidth} * kHeight * 4;
    ASSERT_EQ(3 * kFrameBytes, frames.size());
    const auto expect_color = [&](size_t x, size_t y, std::array<int, 4> rgba) {
        const char* pixel = &frames[2 * kFrameBytes + (y * kWidth + x) * 4];  // top row first
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(rgba[i], static_cast<unsigned char>(pixel[i]), 8) << x << ", " << y << ", channel " << i;
    };
    expect_color(8, 4, {200, 0, 0, 255});
    expect_color(8, 40, {0, 0, 200, 255});
    expect_color(56, 4, alpha ? std::array{200, 0, 0, 0} : std::array{0, 0, 0, 255});
}

INSTANTIATE_TEST_SUITE_P(Formats, Videos,
                         testing::Values(VideoCase{"a.mp4", "", false}, VideoCase{"a.mov", "", true},
                                         VideoCase{"a.WEBM", "-c:v libvpx-vp9", true}));

TEST(Video, EveryFaultIsNamedAndLeavesNoFile) {
    const TemporaryFolder folder;
    const stage::VideoSettings good{kWidth, kHeight, 25.0};
    const std::pair<const char*, stage::VideoSettings> cases[] = {
        {"a.avi", good}, {"a.mov", {0, kHeight, 25.0}}, {"a.mp4", {kWidth, kHeight, 0.0}}, {"none/a.mp4", good}};
    for (const auto& [name, settings] : cases)
        EXPECT_THAT(VideoFile::create(folder / name, settings).error().message, HasSubstr(name));
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
    /// The only command there is.
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

TEST_F(VideoCommand, ThatIsMissingIsAskedFor) {
    EXPECT_THAT(VideoFile::create(folder / "a.mp4", settings).error().message,
                HasSubstr("a.mp4: there is no ffmpeg command; install the package ffmpeg"));
}

TEST_F(VideoCommand, ThatFailsIsQuotedWithItsLastLines) {
    put_ffmpeg("for i in 1 2 3 4 5 6 7; do echo \"line $i\" >&2; done\nexit 3\n");
    auto video = VideoFile::create(folder / "a.mp4", settings);
    ASSERT_TRUE(video);
    std::string message;
    for (int i = 0; i < 1000 && message.empty(); ++i)  // it takes a while to end
        if (const auto added = video->add_frame(video_frame(0)); !added) message = added.error().message;
    EXPECT_THAT(message,
                testing::EndsWith("a.mp4: ffmpeg failed with exit status 3:\nline 3\nline 4\nline 5\nline 6\nline 7"));
    EXPECT_TRUE(folder.is_empty());
}

TEST_F(VideoCommand, ThatFailsAtTheEndLeavesNoFile) {
    const std::tuple<const char*, decltype(SIG_DFL), const char*> cases[] = {
        {"exit 1", SIG_DFL, "ffmpeg failed with exit status 1:\nfull"},
        {"kill -9 $$", SIG_DFL, "ffmpeg was ended by signal 9 (Killed):\nfull"},
        {"exit 1", SIG_IGN, "ffmpeg failed: its exit status is not known (No child processes):\nfull"},
    };
    for (const auto& [end, child_signal, message] : cases) {
        put_ffmpeg(std::string("for last; do :; done\necho some >\"${last#file:}\"\nwhile read -r line; do :; done\n") +
                   "echo full >&2\n" + end + "\n");
        const auto before = std::signal(SIGCHLD, child_signal);
        const auto written = write_video(folder / "a.mp4", settings);
        std::signal(SIGCHLD, before);
        ASSERT_FALSE(written) << message;
        EXPECT_THAT(written.error().message, HasSubstr(message));
        EXPECT_TRUE(folder.is_empty()) << message;
    }
}

TEST(Video, RatesAreExact) {
    const std::pair<double, const char*> cases[] = {
        {12.5, "12500/1000"}, {30.0, "30000/1000"}, {29.97, "30000/1001"}, {59.94006, "60000/1001"}};
    for (const auto& [rate, text] : cases) EXPECT_EQ(text, stage::frame_rate_text(rate));
}

TEST(Progress, TellsRateAndTimeLeft) {
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
