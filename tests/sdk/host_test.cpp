// Runs the sample host as a user does. The expected output follows from the smoke's rules: unused birth time is
// saved up, a particle moves the same distance in every frame of its life, and it dies when its age exceeds its life.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

namespace {

struct Output {
    std::string text;  // standard output and standard error
    int status = -1;
};

Output run_host(const std::string& arguments) {
    Output output;
    FILE* pipe = popen((std::string(TOVU_SAMPLE_HOST) + " " + arguments + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return output;
    char piece[4096];
    while (const size_t n = std::fread(piece, 1, sizeof piece, pipe)) output.text.append(piece, n);
    const int status = pclose(pipe);
    output.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return output;
}

struct HostCase {
    const char* name;
    const char* arguments;
    int quads;             // after 100 frames of 0.02 s
    int oldest, youngest;  // number of frames in which these particles have moved
};
// At 30 births per second the n-th birth is in the first frame f with n < 0.6 f; at 120.3 in the first with n < 2.406
// f.
const HostCase kHostCases[] = {
    {"vertex arrays", "use_array=1", 59, 99, 2},
    {"a short life", "life_time=0.51 sort=1", 15, 25, 2},
    {"a small pool keeps the oldest", "number_of_particles=10", 10, 99, 84},
    {"several births a frame", "birth_rate=120.3 life_time=1.01 number_of_particles=1000", 120, 50, 1},
};

// 50 units per second are one unit per frame. With closed opening angles all particles move along +Y, which the
// rotation about Z turns to -X.
TEST(SampleHost, CountsQuadsAndMeasuresTheBox) {
    for (const HostCase& c : kHostCases) {
        SCOPED_TRACE(c.name);
        const Output output =
            run_host(std::string(TOVU_SMOKE_PLUGIN) +
                     " opening_angle_x=0 opening_angle_z=0 initial_speed=50 initial_rot_z=90 " + c.arguments);
        ASSERT_EQ(0, output.status) << output.text;
        const size_t last_line = output.text.rfind("after 100 frames");
        ASSERT_NE(std::string::npos, last_line) << output.text;
        double low[3], high[3];
        int quads = 0;
        ASSERT_EQ(7, std::sscanf(output.text.c_str() + last_line,
                                 "after 100 frames: bounding box %lf %lf %lf to %lf %lf %lf, %d quads", &low[0],
                                 &low[1], &low[2], &high[0], &high[1], &high[2], &quads));
        EXPECT_EQ(c.quads, quads);
        EXPECT_NEAR(-c.oldest, low[0], 1e-3);
        EXPECT_NEAR(-c.youngest, high[0], 1e-3);
        for (int axis : {1, 2}) EXPECT_NEAR(0, std::max(-low[axis], high[axis]), 1e-3);
    }
}

// Lines of host_digests.txt are a digest and settings. The settings cover births, both drawing paths, forces, turns,
// curves, sorting and world coordinates.
TEST(SampleHostOutput, HasTheStoredDigestsInAllBuilds) {
    std::ifstream stored(TOVU_SOURCE_DIR "/tests/sdk/host_digests.txt");
    int count = 0;
    for (std::string digest, settings; stored >> digest && std::getline(stored, settings); ++count)
        EXPECT_THAT(run_host(TOVU_SMOKE_PLUGIN + settings).text, testing::HasSubstr("\ndigest " + digest)) << settings;
    EXPECT_GT(count, 0);
}

TEST(SampleHostOutput, SaysWhatThePluginRegistered) {
    const Output output = run_host(TOVU_SMOKE_PLUGIN);
    EXPECT_EQ(0, output.status);
    for (const char* line :
         {"plug-in TovuSmoke\ntype 1\n", "\n 0 Int       number_of_particles ", "\n59 Bool      spawn_image_bool ",
          "button reset \"Reset\" is action 1\n", "9096 bytes per instance\n", "event Sort\nevent qsort\n"})
        EXPECT_THAT(output.text, testing::HasSubstr(line));
}

TEST(SampleHostOutput, SaysWhatIsWrong) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "usage: tovu_sample_host PLUGIN ["},
        {"/nowhere/smoke.so", "/nowhere/smoke.so"},
        {"libm.so.6", "PLUGIN_INIT is missing"},
        {TOVU_SMOKE_PLUGIN " birth_rat=3", "'birth_rat=3' is not parameter=value"},
        {TOVU_SMOKE_PLUGIN " birth_rate", "'birth_rate' is not parameter=value"},
    };
    for (const auto& [arguments, message] : cases) {
        const Output output = run_host(arguments);
        EXPECT_EQ(2, output.status) << arguments;
        EXPECT_THAT(output.text, testing::HasSubstr(message));
    }
}

}  // namespace
