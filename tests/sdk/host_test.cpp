// The sample host, run as its reader would run it. What it has to print follows from the smoke's rules: births are made
// up from saved time, every particle covers the same way in every frame of its life, and dies of age.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

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
    float birth_rate;
    float life_time;
    int pool;
    const char* more;  // further arguments, which change nothing of what is expected
};

void PrintTo(const HostCase& c, std::ostream* out) {
    *out << c.name;
}

// Frames that each live particle has moved in, after 100 frames of 0.02 s.
std::vector<int> frames_lived(const HostCase& c) {
    constexpr float kFrame = 0.02f;
    struct Live {
        float age;
        int frames;
    };
    std::vector<Live> live;
    float saved = 0;
    for (int frame = 0; frame < 100; ++frame) {
        saved += kFrame;
        const float period = 1.0f / c.birth_rate;
        if (period < saved) {
            const int births = static_cast<int>(saved / period);
            for (int i = 0; i < births && static_cast<int>(live.size()) < c.pool; ++i) live.push_back({0, 0});
            saved -= static_cast<float>(births) * period;
        }
        for (Live& particle : live) {
            particle.age += kFrame;
            ++particle.frames;
        }
        std::erase_if(live, [&c](const Live& particle) { return particle.age > c.life_time; });
    }
    std::vector<int> result;
    for (const Live& particle : live) result.push_back(particle.frames);
    return result;
}

class SampleHost : public testing::TestWithParam<HostCase> {};

// 50 units a second are one unit a frame. With closed opening angles all of it goes along +Y, turned about Z to -X.
TEST_P(SampleHost, CountsQuadsAndMeasuresTheBox) {
    const HostCase& c = GetParam();
    const std::string arguments =
        std::string(TOVU_SMOKE_PLUGIN) + " opening_angle_x=0 opening_angle_z=0 initial_speed=50 initial_rot_z=90" +
        " birth_rate=" + std::to_string(c.birth_rate) + " life_time=" + std::to_string(c.life_time) +
        " number_of_particles=" + std::to_string(c.pool) + " " + c.more;
    const Output output = run_host(arguments);
    ASSERT_EQ(0, output.status) << output.text;

    const size_t last_line = output.text.rfind("after 100 frames");
    ASSERT_NE(std::string::npos, last_line) << output.text;
    double low[3], high[3];
    int quads = 0;
    ASSERT_EQ(7, std::sscanf(output.text.c_str() + last_line,
                             "after 100 frames: bounding box %lf %lf %lf to %lf %lf %lf, %d quads", &low[0], &low[1],
                             &low[2], &high[0], &high[1], &high[2], &quads));
    const std::vector<int> expected = frames_lived(c);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(static_cast<int>(expected.size()), quads);
    EXPECT_NEAR(-*std::max_element(expected.begin(), expected.end()), low[0], 1e-3);
    EXPECT_NEAR(-*std::min_element(expected.begin(), expected.end()), high[0], 1e-3);
    for (int axis : {1, 2}) {
        EXPECT_NEAR(0, low[axis], 1e-3);
        EXPECT_NEAR(0, high[axis], 1e-3);
    }
}

const HostCase kHostCases[] = {
    {"defaults", 30, 3, 100, ""},
    {"vertex arrays", 30, 3, 100, "use_array=1"},
    {"sorted", 30, 3, 100, "sort=1"},
    {"a short life", 30, 0.5f, 100, ""},
    {"a small pool keeps the oldest", 30, 3, 10, ""},
    {"several births a frame", 120, 1, 1000, ""},
    {"a text of its own", 30, 3, 100, "'color=0 1 0 0 1 0 0 1'"},
};
std::string test_name(const testing::TestParamInfo<HostCase>& row) {
    std::string name = row.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}
INSTANTIATE_TEST_SUITE_P(, SampleHost, testing::ValuesIn(kHostCases), test_name);

TEST(SampleHostOutput, SaysWhatThePluginRegistered) {
    const Output output = run_host(TOVU_SMOKE_PLUGIN);
    EXPECT_EQ(0, output.status);
    for (const char* line :
         {"plug-in TovuSmoke\ntype 1\n", "\n 0 Int       number_of_particles ", "\n45 String    return_value ",
          "\n59 Bool      spawn_image_bool ", "button reset \"Reset\" is action 1\n",
          "button build_alpha \"Build Alpha\" is action 2\n", "9096 bytes an instance\n", "event Sort\nevent qsort\n"})
        EXPECT_THAT(output.text, testing::HasSubstr(line));
    EXPECT_THAT(output.text, testing::Not(testing::HasSubstr("\n60 ")));
}

TEST(SampleHostOutput, SaysWhatIsWrong) {
    const struct {
        const char* arguments;
        const char* message;
    } cases[] = {
        {"", "usage: host PLUGIN.so"},
        {"/nowhere/smoke.so", "/nowhere/smoke.so"},
        {TOVU_SMOKE_PLUGIN " birth_rat=3", "'birth_rat=3' is not parameter=value"},
        {TOVU_SMOKE_PLUGIN " birth_rate", "'birth_rate' is not parameter=value"},
    };
    for (const auto& c : cases) {
        const Output output = run_host(c.arguments);
        EXPECT_EQ(2, output.status) << c.arguments;
        EXPECT_THAT(output.text, testing::HasSubstr(c.message));
    }
}

}  // namespace
