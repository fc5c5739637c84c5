// Numbered frames, videos, progress and traces.
#include <gmock/gmock.h>

#include <cstdlib>

#include "stage/output/frame_names.h"
#include "stage/output/progress.h"
#include "stage/output/trace_file.h"
#include "stage/output/video_file.h"
#include "stage/output/whole_file.h"
#include "temporary_folder.h"

namespace {

using stage::Picture;
using stage::VideoFile;
using testing::HasSubstr;

struct NameCase {
    const char* pattern;
    int number;
    const char* expected;  // empty: an error
};

TEST(FrameNames, FollowTheirPattern) {
    const NameCase cases[] = {
        {"frames/%04d.png", 7, "frames/0007.png"},
        {"%d.png", 12, "12.png"},
        {"a%3d", 5, "a  5"},
        {"%04d", 123456, "123456"},
        {"100%%-%02d", 3, "100%-03"},
        {"%04d", -1, ""},
        {"still.png", 1, ""},
        {"%d-%d", 1, ""},
        {"%s", 1, ""},
        {"%", 1, ""},
        {"%0d", 1, ""},
        {"%04", 1, ""},
        {"%012d", 1, ""},
        {"%n%04d", 1, ""},
    };
    for (const NameCase& c : cases) {
        const auto name = stage::frame_name(c.pattern, c.number);
        ASSERT_EQ(*c.expected != '\0', static_cast<bool>(name)) << c.pattern;
        if (name)
            EXPECT_EQ(c.expected, name->string());
        else
            EXPECT_THAT(name.error().message, HasSubstr(c.pattern));
    }
}

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 48;

/// Left half red, right half transparent; the bottom rows, as many as the frame's number, are blue.
Picture video_frame(int number) {
    Picture frame{kWidth, kHeight, stage::kPictureRgba, {}};
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) {
            const bool blue = y < number;
            for (const int value : {blue ? 0 : 200, 0, blue ? 200 : 0, x < kWidth / 2 ? 255 : 0})
                frame.bytes.push_back(static_cast<uint8_t>(value));
        }
    return frame;
}

stage::Result<stage::Done> write_video(const std::filesystem::path& path, const stage::VideoSettings& settings) {
    auto video = VideoFile::create(path, settings);
    if (!video) return video.error();
    for (int i = 0; i < 3; ++i)
        if (auto added = video->add_frame(video_frame(16 * i)); !added) return added.error();
    return video->finish();
}

/// Decodes the video's last frame to RGBA, top row first.
std::string decoded_last_frame(const std::filesystem::path& path, const std::string& decoder) {
    const std::string raw = path.string() + ".raw";
    const std::string command = "ffmpeg -nostdin -loglevel error " + decoder + " -i '" + path.string() +
                                "' -f rawvideo -pix_fmt rgba -y '" + raw + "'";
    EXPECT_EQ(0, std::system(command.c_str()));
    const std::string frames = file_bytes(raw);
    constexpr size_t kFrameBytes = size_t{kWidth} * kHeight * 4;
    EXPECT_EQ(3 * kFrameBytes, frames.size());
    return frames.size() < kFrameBytes ? std::string(kFrameBytes, '\0') : frames.substr(frames.size() - kFrameBytes);
}

struct VideoCase {
    const char* name;
    const char* decoder;
    bool alpha;
};

class Videos : public testing::TestWithParam<VideoCase> {};

TEST_P(Videos, HoldTheirFramesAndRepeatToTheByte) {
    const TemporaryFolder folder;
    stage::VideoSettings settings{kWidth, kHeight, 25.0, {0, 200, 0}};
    const std::filesystem::path path = folder / GetParam().name;
    auto written = write_video(path, settings);
    ASSERT_TRUE(written) << written.error().message;
    const std::string first = file_bytes(path);
    ASSERT_TRUE(write_video(path, settings));
    EXPECT_EQ(first, file_bytes(path));

    const std::string frame = decoded_last_frame(path, GetParam().decoder);
    const auto expect_color = [&](int x, int y, int red, int green, int blue, int alpha) {
        const size_t at = (static_cast<size_t>(y) * kWidth + static_cast<size_t>(x)) * 4;
        const int expected[] = {red, green, blue, alpha};
        for (size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(expected[i], static_cast<unsigned char>(frame[at + i]), 8)
                << x << ", " << y << ", channel " << i;
    };
    expect_color(8, 4, 200, 0, 0, 255);
    expect_color(8, 40, 0, 0, 200, 255);  // the lower rows
    if (GetParam().alpha)
        expect_color(56, 4, 200, 0, 0, 0);
    else
        expect_color(56, 4, 0, 200, 0, 255);
}

INSTANTIATE_TEST_SUITE_P(Formats, Videos,
                         testing::Values(VideoCase{"a.mp4", "", false}, VideoCase{"a.mov", "", true},
                                         VideoCase{"a.WEBM", "-c:v libvpx-vp9", true}));

TEST(Video, EveryFaultIsNamedAndLeavesNoFile) {
    const TemporaryFolder folder;
    const stage::VideoSettings good{kWidth, kHeight, 25.0, {}};
    const auto expect_problem = [&](const char* name, const stage::VideoSettings& settings, const char* problem) {
        const auto video = VideoFile::create(folder / name, settings);
        ASSERT_FALSE(video) << name;
        EXPECT_THAT(video.error().message, HasSubstr(std::string(name) + ": "));
        EXPECT_THAT(video.error().message, HasSubstr(problem));
    };
    expect_problem("a.avi", good, ".mp4, .mov, .webm");
    expect_problem("a.mp4", {kWidth, 47, 25.0, {}}, "must be even");
    expect_problem("a.mov", {0, kHeight, 25.0, {}}, "at least 1");
    expect_problem("a.mp4", {kWidth, kHeight, 0.0, {}}, "frames per second");
    expect_problem("none/a.mp4", good, "no folder");
    {
        auto video = VideoFile::create(folder / "a.mp4", good);
        ASSERT_TRUE(video);
        EXPECT_THAT(video->add_frame({2, 2, stage::kPictureRgba, std::vector<uint8_t>(16)}).error().message,
                    HasSubstr("2 x 2 pixels in a video of 64 x 48"));
        EXPECT_TRUE(video->add_frame(video_frame(0)));
    }
    EXPECT_TRUE(folder.is_empty()) << "given up";
    auto empty = VideoFile::create(folder / "a.mp4", good);
    EXPECT_THAT(empty->finish().error().message, HasSubstr("no frames"));
    EXPECT_THAT(empty->finish().error().message, HasSubstr("already finished"));
    EXPECT_TRUE(folder.is_empty());
}

class VideoCommand : public testing::Test {
  protected:
    /// The only command there is.
    void put_ffmpeg(const std::string& script) {
        write_bytes(commands_ / "ffmpeg", "#!/bin/sh\n" + script);
        std::filesystem::permissions(commands_ / "ffmpeg", std::filesystem::perms::owner_all);
    }
    void SetUp() override { setenv("PATH", commands_.path().c_str(), 1); }
    void TearDown() override { setenv("PATH", path_.c_str(), 1); }

    const std::string path_ = std::getenv("PATH");
    const TemporaryFolder commands_;
    const TemporaryFolder folder_;
    const stage::VideoSettings settings_{kWidth, kHeight, 25.0, {}};
};

TEST_F(VideoCommand, ThatIsMissingIsAskedFor) {
    EXPECT_THAT(VideoFile::create(folder_ / "a.mp4", settings_).error().message,
                HasSubstr("a.mp4: there is no ffmpeg command; install the package ffmpeg"));
    EXPECT_TRUE(folder_.is_empty());
}

TEST_F(VideoCommand, ThatFailsIsQuotedWithItsLastLines) {
    put_ffmpeg("for i in 1 2 3 4 5 6 7; do echo \"line $i\" >&2; done\nexit 3\n");
    auto video = VideoFile::create(folder_ / "a.mp4", settings_);
    ASSERT_TRUE(video);
    std::string message;
    for (int i = 0; i < 1000 && message.empty(); ++i)  // it takes a while to end
        if (const auto added = video->add_frame(video_frame(0)); !added) message = added.error().message;
    EXPECT_THAT(message,
                testing::EndsWith("a.mp4: ffmpeg failed with exit status 3:\nline 3\nline 4\nline 5\nline 6\nline 7"));
    EXPECT_TRUE(folder_.is_empty());
}

TEST_F(VideoCommand, ThatFailsAtTheEndLeavesNoFile) {
    put_ffmpeg(
        "for last; do :; done\necho some >\"${last#file:}\"\nwhile read -r line; do :; done\necho full >&2\nexit 1\n");
    const auto written = write_video(folder_ / "a.mp4", settings_);
    ASSERT_FALSE(written);
    EXPECT_THAT(written.error().message, HasSubstr("exit status 1:\nfull"));
    EXPECT_TRUE(folder_.is_empty());
}

TEST_F(VideoCommand, ThatIsStoppedHalfWayLeavesNoFile) {
    put_ffmpeg("for last; do :; done\necho some >\"${last#file:}\"\nwhile read -r line; do :; done\n");
    {
        auto video = VideoFile::create(folder_ / "a.mp4", settings_);
        ASSERT_TRUE(video);
        while (folder_.is_empty()) usleep(1000);
    }
    EXPECT_TRUE(folder_.is_empty());
}

TEST(Video, RatesAreExact) {
    const std::pair<double, const char*> cases[] = {{25.0, "25000/1000"},   {29.97, "30000/1001"},
                                                    {23.976, "24000/1001"}, {59.94006, "60000/1001"},
                                                    {12.5, "12500/1000"},   {30.0, "30000/1000"}};
    for (const auto& [rate, text] : cases) EXPECT_EQ(text, stage::frame_rate_text(rate));
}

TEST(Progress, TellsRateAndTimeLeft) {
    EXPECT_EQ("frame 0/100", stage::progress_text(0, 100, 3.0));
    EXPECT_EQ("frame 1/100", stage::progress_text(1, 100, 0.0));
    EXPECT_EQ("frame 30/100, 12.0 frames/s, 5.8 s left", stage::progress_text(30, 100, 2.5));
    EXPECT_EQ("frame 1/151, 1.0 frames/s, 2:30 min left", stage::progress_text(1, 151, 1.0));
    EXPECT_EQ("frame 1/7201, 1.0 frames/s, 2:00:00 h left", stage::progress_text(1, 7201, 1.0));
    EXPECT_EQ("frame 100/100, 50.0 frames/s, took 2.0 s", stage::progress_text(100, 100, 2.0));
}

TEST(Progress, IsAPlainLineWhereThereIsNoTerminal) {
    const TemporaryFolder folder;
    std::FILE* file = std::fopen((folder / "log").c_str(), "w");
    {
        stage::ProgressLine line(2, file);
        line.show(1);  // too soon to be told
        line.show(2);
    }
    std::fclose(file);
    EXPECT_THAT(file_bytes(folder / "log"), testing::MatchesRegex("frame 2/2[^\n\r]*\n"));
}

TEST(Trace, IsTheJsonThatViewersRead) {
    const stage::TraceSection sections[] = {{"Sort", 0.5, 0.00025, 1}, {"a \"b\"\\\n", 1.0, 2.0, 2}};
    const std::string expected =
        "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n"
        "{\"name\":\"Sort\",\"ph\":\"X\",\"ts\":500000.000,\"dur\":250.000,\"pid\":1,\"tid\":1},\n"
        "{\"name\":\"a "
        "\\\"b\\\"\\\\\\u000a\",\"ph\":\"X\",\"ts\":1000000.000,\"dur\":2000000.000,\"pid\":1,\"tid\":2}\n"
        "]}\n";
    const TemporaryFolder folder;
    ASSERT_TRUE(stage::write_trace(folder / "trace.json", sections));
    EXPECT_EQ(expected, file_bytes(folder / "trace.json"));
    EXPECT_THAT(stage::write_trace(folder / "none/trace.json", sections).error().message, HasSubstr("none/trace.json"));
    EXPECT_FALSE(std::filesystem::exists(stage::partial_name(folder / "trace.json")));
}

}  // namespace
