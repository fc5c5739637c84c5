// The command line as its user meets it: exit statuses, messages, files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

std::string text_of(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

// A folder of its own for each test, with a tiny scene in it. Commands run inside.
class Command : public testing::Test {
  protected:
    void SetUp() override {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::path(testing::TempDir()) / ("tovu_command_" + std::string(test->name()));
        fs::remove_all(folder_);
        fs::create_directories(folder_ / "work");
        std::ofstream(folder_ / "work" / "tiny.toml") << R"(size = [32, 24]
frame_rate = 25
length = 0.4
background = "#203040"
camera = { position = [0, 20, 120] }
[[container]]
name = "smoke"
parameters = { birth_rate = 100, life_time = 0.5, sort = true, turbulence_x = 3 }
)";
    }
    void TearDown() override { fs::remove_all(folder_); }

    Outcome run(const std::string& arguments) {
        const std::string command = "cd '" + (folder_ / "work").string() + "' && " + TOVU_PROGRAM + " " + arguments +
                                    " >../output 2>../errors </dev/null";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text_of(folder_ / "output"), text_of(folder_ / "errors")};
    }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_ / "work"))
            names.push_back(fs::relative(entry.path(), folder_ / "work").string());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string bytes(const std::string& name) const { return text_of(folder_ / "work" / name); }

    fs::path folder_;
};

struct MistakeCase {
    const char* arguments;
    const char* message;
};

const MistakeCase kMistakes[] = {
    {"", "subcommand is required"},
    {"rendr tiny.toml", "unknown command 'rendr': did you mean 'render'?"},
    {"render tiny.toml", "--output is required"},
    {"render none.toml -o x.png --at 0", "none.toml: there is no scene file of this name"},
    {"render tiny.toml -o x.gif", "must end in .mp4, .mov, .webm or .png"},
    {"render tiny.toml -o x.png", "one picture needs --at SECONDS"},
    {"render tiny.toml -o x.png --at 0.4", "--at 0.4: must be a time in seconds from 0 and below 0.4"},
    {"render tiny.toml -o x.png --at soon", "--at soon: must be a time"},
    {"render tiny.toml -o x.png --at 0 --frames 0-1", "--at and --frames: give one of them"},
    {"render tiny.toml -o x.mp4 --at 0", "a video takes --frames A-B"},
    {"render tiny.toml -o x.mp4 --frames 3-2",
     "--frames 3-2: must be A-B with 0 <= A <= B <= 9; the scene has 10 frames"},
    {"render tiny.toml -o x.mp4 --frames 5-10", "--frames 5-10: must be A-B"},
    {"render tiny.toml -o x.mp4 --size 31x24", "even"},
    {"render tiny.toml -o x.png --at 0 --size 32", "--size 32: must be WIDTHxHEIGHT"},
    {"render tiny.toml -o x.png --at 0 --size 0x24", "--size 0x24: must be WIDTHxHEIGHT"},
    {"render tiny.toml -o x.png --at 0 --seed -1", "--seed -1: must be a whole number from 0 to 4294967295"},
    {"render tiny.toml -o f/%s.png", "-o f/%s.png: "},
    {"render tiny.toml -o no/such/%d.png", "there is no folder 'no'"},
    {"render tiny.toml -o no/x.png --at 0", "-o no/x.png: there is no folder 'no'"},
    {"render tiny.toml -o /proc/x.png --at 0", "/proc"},
    {"render tiny.toml -o x.png --at 0 --set smoke.birth_rat=3",
     "--set smoke.birth_rat=3: parameter 'birth_rat' is not known to TovuSmoke; did you mean 'birth_rate'?"},
    {"render tiny.toml -o x.png --at 0 --set smoke.birth_rate=-1", "--set smoke.birth_rate=-1: "},
    {"render tiny.toml -o x.png --at 0 --set smoke.birth_rate=many", "--set smoke.birth_rate=many: "},
    {"render tiny.toml -o x.png --at 0 --set smok.birth_rate=1",
     "no container 'smok' carries a plug-in: did you mean 'smoke'?"},
    {"render tiny.toml -o x.png --at 0 --set smoke.spawn_cont_name=smoky",
     "unknown container 'smoky': did you mean 'smoke'?"},
    {"render tiny.toml -o x.png --at 0 --set smoke.spawn_image=puf", "unknown image 'puf': did you mean 'puff'?"},
    {"render tiny.toml -o x.png --at 0 --plugin none.so", "none.so"},
    {"params none.so", "none.so"},
    {"params tiny.toml", "tiny.toml"},
};

TEST_F(Command, MistakesEndWithStatus2AndLeaveNothing) {
    for (const MistakeCase& c : kMistakes) {
        const Outcome outcome = run(c.arguments);
        EXPECT_EQ(2, outcome.status) << c.arguments;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message)) << c.arguments;
        EXPECT_THAT(outcome.errors, testing::StartsWith("tovu: ")) << c.arguments;
        EXPECT_THAT(outcome.output, IsEmpty()) << c.arguments;
        ASSERT_THAT(files(), testing::ElementsAre("tiny.toml")) << c.arguments;
    }
}

struct SceneMistakeCase {
    const char* text;  // of the smoke's container, from line 1
    const char* message;
};

// What only the plug-in's registration can tell still names the place in the file.
const SceneMistakeCase kSceneMistakes[] = {
    {"parameters = { gravity = 1, birth_rat = 3 }",
     "bad.toml:3:41: parameter 'birth_rat' is not known to TovuSmoke; did you mean 'birth_rate'?"},
    {"parameters = { number_of_particles = 25001 }", "bad.toml:3:38: parameter 'number_of_particles'"},
    {"parameters = { number_of_particles = 'x' }", "bad.toml:3:38: parameter 'number_of_particles'"},
    {"parameters = { sort = 5 }", "bad.toml:3:23: parameter 'sort'"},
    {"parameters = { spawn_type = 'Cub' }", "bad.toml:3:29: parameter 'spawn_type'"},
    {"texture = 'pufff'\nplugin = 'smoke'", "bad.toml:3:11: unknown texture 'pufff': did you mean 'puff'?"},
    {"plugin = 'none.so'", "bad.toml:3:10: "},
    {"plugin = 'smoke'\n[[at]]\ntime = 1\ncontainer = 'a'\nparameters = { gravitiy = 1 }",
     "bad.toml:7:27: parameter 'gravitiy' is not known"},
    {"plugin = 'smoke'\n[[at]]\ntime = 1\ncontainer = 'a'\npress = 'rest'",
     "bad.toml:7:9: TovuSmoke has no push button 'rest': did you mean 'reset'?"},
    {"[[track]]\ncontainer = 'a'\nproperty = 'geometry'\nkeys = [{time=0, value={kind='rectangle', width=1, "
     "height=1}},\n"
     "{time=1, value={kind='ellipse', width=1, height=1}}]",
     "bad.toml:7:16: a shape deforms into one with as many outlines and corners, but there are 64 corners in outline 1 "
     "here, 4 in the key before; ease = \"step\" switches at once"},
    {"[[track]]\ncontainer = 'a'\nproperty = 'geometry'\nkeys = [{time=0, value={kind='text', text='I'}},\n"
     "{time=1, value={kind='text', text='i'}}]",
     "bad.toml:7:16: a shape deforms into one with as many outlines and corners, but there are 2 outlines here, 1 in "
     "the "
     "key before"},
};

TEST_F(Command, MistakesAboutThePluginNameThePlaceInTheScene) {
    for (const SceneMistakeCase& c : kSceneMistakes) {
        std::ofstream(folder_ / "work" / "bad.toml") << "[[container]]\nname = 'a'\n" << c.text << "\n";
        const Outcome outcome = run("render bad.toml -o x.png --at 0");
        EXPECT_EQ(2, outcome.status) << c.text;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message)) << c.text;
        EXPECT_FALSE(fs::exists(folder_ / "work" / "x.png"));
    }
}

// Files of scenes: dot.png is no picture, the pictures s1.png and s2.png are of 256 x 256 and 128 x 128 pixels.
const SceneMistakeCase kPictureMistakes[] = {
    {"images = { dot = 'dot.png' }", "bad.toml:1:18: "},
    {"images = { s = 's%d.png' }",
     "s2.png has 128 x 128 pixels, s1.png has 256 x 256 pixels: the pictures of a sequence are of one size"},
    {"images = { s = 's1.png' }\nat = [{ time = 1, image = 's', file = 'dot.png' }]", "bad.toml:2:39: "},
};

TEST_F(Command, PicturesThatAreNotRightLeaveNothing) {
    const fs::path assets = fs::path(TOVU_SOURCE_DIR) / "scenes" / "assets";
    std::ofstream(folder_ / "work" / "dot.png") << "not a picture";
    fs::copy_file(assets / "logo.png", folder_ / "work" / "s1.png");
    fs::copy_file(assets / "logo_flame.png", folder_ / "work" / "s2.png");
    for (const SceneMistakeCase& c : kPictureMistakes) {
        std::ofstream(folder_ / "work" / "bad.toml") << c.text << "\n[[container]]\nname = 'a'\nplugin = 'smoke'\n";
        const Outcome outcome = run("render bad.toml -o x.mp4");
        EXPECT_EQ(2, outcome.status) << c.text;
        EXPECT_THAT(outcome.errors, HasSubstr(c.message)) << c.text;
        EXPECT_THAT(files(), testing::ElementsAre("bad.toml", "dot.png", "s1.png", "s2.png", "tiny.toml"));
    }
}

TEST_F(Command, TheSameSceneAndSeedGiveTheSameBytes) {
    for (const char* arguments : {"-o a.mp4", "-o b.mp4", "-o c.mp4 --seed 2"}) {
        const Outcome outcome = run(std::string("render tiny.toml ") + arguments);
        ASSERT_EQ(0, outcome.status) << outcome.errors;
    }
    EXPECT_FALSE(bytes("a.mp4").empty());
    EXPECT_TRUE(bytes("a.mp4") == bytes("b.mp4"));
    EXPECT_FALSE(bytes("a.mp4") == bytes("c.mp4"));
}

TEST_F(Command, PartsOfASceneLookAsInTheWhole) {
    ASSERT_EQ(0, run("render tiny.toml -o all/%02d.png").status);
    ASSERT_EQ(0, run("render tiny.toml -o part_%d.png --frames 6-7").status);
    ASSERT_EQ(0, run("render tiny.toml -o still.png --at 0.27").status) << "frame 6 of 25 a second";
    EXPECT_FALSE(bytes("all/06.png") == bytes("all/07.png"));
    EXPECT_TRUE(bytes("all/06.png") == bytes("part_6.png"));
    EXPECT_TRUE(bytes("all/07.png") == bytes("part_7.png"));
    EXPECT_TRUE(bytes("all/06.png") == bytes("still.png"));
    EXPECT_TRUE(fs::exists(folder_ / "work" / "all" / "09.png"));
    EXPECT_FALSE(fs::exists(folder_ / "work" / "all" / "10.png"));
    EXPECT_FALSE(fs::exists(folder_ / "work" / "part_5.png"));
}

// Runs `render` in a process of its own until it has begun to write, then sends it the signal. Its exit status.
int status_after_signal(const fs::path& folder, int signal) {
    const pid_t child = fork();
    if (child == 0) {
        std::signal(signal, SIG_DFL);  // it is ignored in what runs in the background
        if (chdir(folder.c_str()) != 0 || !std::freopen("/dev/null", "w", stderr)) _exit(99);
        execl(TOVU_PROGRAM, "tovu", "render", "long.toml", "-o", "x.mp4", nullptr);
        _exit(99);
    }
    const auto begun = [&folder] {
        return std::any_of(fs::directory_iterator(folder), fs::directory_iterator(),
                           [](const fs::directory_entry& entry) { return entry.path().extension() == ".part"; });
    };
    int status = 0;
    while (!begun() && waitpid(child, &status, WNOHANG) == 0) usleep(1000);
    kill(child, signal);
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(Command, AnEndedRenderTakesItsUnfinishedFileAlong) {
    std::ofstream(folder_ / "work" / "long.toml")
        << "size = [32, 24]\nlength = 3600\ncontainer = [{ name = 'a', plugin = 'smoke' }]\n";
    for (const int signal : {SIGINT, SIGTERM}) {
        EXPECT_EQ(128 + signal, status_after_signal(folder_ / "work", signal));
        EXPECT_THAT(files(), testing::ElementsAre("long.toml", "tiny.toml"));
    }
}

TEST_F(Command, SettingsChangeTheSceneForOnce) {
    ASSERT_EQ(0, run("render tiny.toml -o a.png --at 0.3").status);
    ASSERT_EQ(0, run("render tiny.toml -o b.png --at 0.3 --set smoke.birth_rate=0").status);
    ASSERT_EQ(0, run("render tiny.toml -o c.png --at 0 --set smoke.birth_rate=0").status);
    EXPECT_FALSE(bytes("a.png") == bytes("b.png")) << "one has smoke, the other has none";
    EXPECT_TRUE(bytes("b.png") == bytes("c.png")) << "neither has any";
}

TEST_F(Command, ProgressGoesToStandardErrorAndTheResultToStandardOutput) {
    const Outcome outcome = run("render tiny.toml -o f_%d.png");
    EXPECT_EQ("f_%d.png: 10 frames\n", outcome.output);
    EXPECT_THAT(outcome.errors, HasSubstr("10/10"));
    EXPECT_THAT(outcome.errors, testing::Not(HasSubstr("warning"))) << "the plug-in keeps to the contract";
}

constexpr const char* kProbeAsJson = R"({"name": "Probe", "type": 1, "instance_bytes": 92, "uses_lod": false,
"uses_events": true, "info": [{"name": "info", "text": "A probe"}], "events": ["Work"], "parameters": [
{"index": 0, "name": "count", "label": "Count", "kind": "Int", "default": 3, "minimum": -5.0, "maximum": 10.0},
{"index": 1, "name": "amount", "label": "Amount", "kind": "Float", "default": 0.5, "minimum": 0.0, "maximum": 999999.875},
{"index": 2, "name": "on", "label": "On", "kind": "Bool", "default": true},
{"index": 3, "name": "mode", "label": "Mode", "kind": "Radio", "default": "Fast", "choices": ["Slow", "Fast"]},
{"index": 4, "name": "text", "label": "Text", "kind": "String", "default": "hello", "max_length": 20},
{"index": 5, "name": "target", "label": "Target", "kind": "Container", "default": "", "max_length": 4095},
{"index": 6, "name": "picture", "label": "Picture", "kind": "Image", "default": "", "max_length": 4095}],
"buttons": [{"name": "draw", "label": "Draw", "action": 1}, {"name": "ask", "label": "Ask", "action": 2}]})";

TEST_F(Command, ParamsTellsWhatIsRegistered) {
    const Outcome probe = run("params --json " TOVU_BINARY_DIR "/plugins/tests/probe_plugin.so");
    ASSERT_EQ(0, probe.status) << probe.errors;
    EXPECT_EQ(nlohmann::json::parse(probe.output), nlohmann::json::parse(kProbeAsJson));

    const Outcome smoke = run("params");
    EXPECT_THAT(smoke.output, testing::StartsWith("TovuSmoke: 60 parameters, 9096 bytes an instance\n"));
    EXPECT_THAT(smoke.output, testing::ContainsRegex(
                                  "\n12 +alpha_curve +Alpha Curve +String +\"0.0 1.0 1.0 0.0\" +at most 4096 bytes\n"));
    EXPECT_THAT(smoke.output, testing::ContainsRegex("\n21 +opening_angle_x +Opening Angle X +Float +45 +0 to 360\n"));
    for (const char* arguments : {"help", "--help", "render --help"}) EXPECT_EQ(0, run(arguments).status) << arguments;
}

}  // namespace
