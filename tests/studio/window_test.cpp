// The studio's window, driven by mouse and keyboard events without a screen. The tests check the files that it saves.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "../stage/temporary_folder.h"
#include "random_seed.h"
#include "stage/assets/picture_file.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kScene = R"(# A plume for tests.
size = [160, 90]
frame_rate = 25
length = 2

[[container]]
name = "smoke" # the main one
[container.parameters]
number_of_particles = 100
birth_rate = 30      # a second
alpha_curve = "0 0 0.5 0.5 1 0"
)";

std::string replaced(const std::string& old_text, const std::string& new_text) {
    std::string scene = kScene;
    return scene.replace(scene.find(old_text), old_text.size(), new_text);
}

class StudioWindow : public testing::Test {
  protected:
    TemporaryFolder temporary_;
    // Several levels deep, so that random events in the window that opens files stay in the temporary folder.
    const std::filesystem::path folder_ = temporary_ / "a/b/c/d/e/f/g/h";

    void SetUp() override {
        std::filesystem::create_directories(folder_);
        write_bytes(folder_ / "scene.toml", kScene);
    }

    std::string command(const std::string& arguments, const std::string& script) const {
        write_bytes(folder_ / "script.txt", "size 900 600\n" + script);
        const std::string path = folder_.string();
        return "cd " + path + " && SDL_VIDEODRIVER=offscreen TMPDIR=" + path + " XDG_CACHE_HOME=" + path +
               " XDG_STATE_HOME=" + path + " exec " TOVU_STUDIO " --scenes . --looks none " + arguments +
               " --script script.txt 2>&1";
    }

    // Runs the studio and returns what it prints. Its exit status must be 0.
    std::string run(const std::string& arguments, const std::string& script) const {
        FILE* pipe = popen(command(arguments, script).c_str(), "r");
        std::string output;
        std::array<char, 256> buffer{};
        while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) output += buffer.data();
        EXPECT_EQ(pclose(pipe), 0) << output;
        return output;
    }

    // Returns the name of the picture.
    std::string render(const std::string& scene, int frame) const {
        const std::string command = "cd " + folder_.string() + " && " TOVU_COMMAND " render " + scene +
                                    " --progress none -o " + scene + ".png --frames " + std::to_string(frame) + " 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return scene + ".png";
    }

    std::vector<uint8_t> pixels(const std::string& name) const {
        const auto picture = stage::read_picture(folder_ / name);
        EXPECT_TRUE(picture) << name;
        return picture ? picture->bytes : std::vector<uint8_t>{};
    }

    std::string saved(const std::string& name = "scene.toml") const { return file_bytes(folder_ / name); }
};

struct EditCase {
    const char* name;
    const char* script;    // runs between the first picture and saving
    std::string expected;  // the saved file
};

const EditCase kEdits[] = {
    {"ValueIsTyped", "click parameter.birth_rate\nkey Ctrl+A\ntype 44.5\nkey Return\n",
     replaced("birth_rate = 30 ", "birth_rate = 44.5 ")},
    {"AbsentParameterIsAdded",
     "click search\ntype life time\nwait frames 3\nclick parameter.life_time ctrl\nkey Ctrl+A\ntype 2.25\nkey Return\n",
     std::string(kScene) + "life_time = 2.25\n"},
    {"RadioIsAButton", "click search\ntype spawn type\nwait frames 3\nclick parameter.spawn_type.Sphere\n",
     std::string(kScene) + "spawn_type = \"Sphere\"\n"},
    {"TurnOnSetsAllThatAMapNeeds",
     "click search\ntype eddies\nwait frames 3\nclick parameter.wind_image.list\nclick parameter.wind_image.curl\n"
     "click \"turn on.wind_image\"\n",
     std::string(kScene) + "wind_image = \"curl\"\nuse_wind_image = true\nwind_force = 40\n" +
         "wind_image_range_x = 240\nwind_image_range_y = 240\n"},
    {"TheBlendOfAContainerIsAButton",
     "click search\ntype additive\nwait container.blend\nwait frames 3\nclick container.blend.additive\n",
     replaced("# the main one\n", "# the main one\nblend = \"additive\"\n")},
    {"TurnOnIsOneStepOfUndo",
     "click search\ntype eddies\nwait frames 3\nclick \"turn on.wind_image\"\nwait picture\nkey Ctrl+Z\n", kScene},
    {"UndoTakesBackADragAsOne",
     // Two presses at one place would be a double click, which opens the value for typing.
     "drag parameter.birth_rate 90 0\ndrag parameter.birth_rate@0.3,0.5 50 0\nkey Ctrl+Z\nkey Ctrl+Z\n", kScene},
    {"RedoBringsItBack",
     "click parameter.birth_rate ctrl\nkey Ctrl+A\ntype 50\nkey Return\nkey Ctrl+Z\nwait frames 2\nkey Ctrl+Y\n",
     replaced("birth_rate = 30 ", "birth_rate = 50 ")},
    {"ResetRemovesTheValue", "click reset.number_of_particles\n", replaced("number_of_particles = 100\n", "")},
    {"StateBStartsAsTheFile",
     "click parameter.birth_rate ctrl\nkey Ctrl+A\ntype 50\nkey Return\nclick B\nwait picture\n", kScene},
    {"ASearchThenOnlyTheKeyboard",
     "key Ctrl+F\ntype rate\nkey Return\nwait frames 3\nkey Tab\nkey Ctrl+A\ntype 12\nkey Return\n",
     std::string(kScene) + "gravity = 12\n"},
};

class Edits : public StudioWindow, public testing::WithParamInterface<EditCase> {};

TEST_P(Edits, AreSavedAndNothingElse) {
    run("scene.toml", std::string("wait picture\n") + GetParam().script + "wait picture\nkey Ctrl+S\nwait frames 3\n");
    EXPECT_EQ(saved(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(StudioWindow, Edits, testing::ValuesIn(kEdits),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(StudioWindow, CurvePointsAndColourStopsFollowTheMouse) {
    run("scene.toml",
        "wait picture\nclick search\ntype curve\nwait parameter.alpha_curve\nwait frames 3\n"
        "drag parameter.alpha_curve@0.5,0.3 0 30\n"
        "click search\nkey Ctrl+A\ntype colour over\nwait parameter.color\nwait frames 3\n"
        "click parameter.color@0.5,0.3 double\nwait picture\nkey Ctrl+S\nwait frames 3\n");
    EXPECT_THAT(saved(), HasSubstr("alpha_curve = \"0 0 0.5 0."));  // the position stays, the opacity changed
    EXPECT_THAT(saved(), Not(HasSubstr("0 0 0.5 0.5 1 0")));
    EXPECT_THAT(saved(), testing::ContainsRegex("color = \"0 1 1 1 0.[0-9]+ 1 1 1 1 1 1 1\"\n$"));
}

// Reaches a frame of a new scene by playing, seeking and a step. Exports the frame as a still and as a range, and
// renders it from the saved scene.
TEST_F(StudioWindow, ExportAndRenderDrawThePictureThatItShowed) {
    const std::string output =
        run("steam",
            "wait picture\nwait frames 20\nkey Space\nclick timeline@0.35,0.5\nwait picture\nkey Right\nwait picture\n"
            "picture shown.png\nreport\nkey I\nkey O\nkey Ctrl+S\nwait \"save as.file\"\nwait frames 3\nkey Ctrl+A\n"
            "type mine.toml\nkey Return\nwait frames 3\nkey Ctrl+E\nclick export.still\nclick export.start\n"
            "wait export\nclick export.video\nclick export.file\nkey Ctrl+A\ntype range.png\nclick export.start\n"
            "wait export\n");
    int frame = 0;
    ASSERT_EQ(std::sscanf(output.c_str(), "frame %d,", &frame), 1) << output;
    const auto shown = pixels("shown.png");
    EXPECT_EQ(shown, pixels(render("mine.toml", frame))) << "frame " << frame;
    EXPECT_EQ(shown, pixels("mine.png")) << "frame " << frame;
    EXPECT_EQ(shown, pixels("range.png")) << "frame " << frame;
}

TEST_F(StudioWindow, AContainerIsSavedAsALookThatScenesTake) {
    run("scene.toml",
        "wait picture\nclick parameter.birth_rate ctrl\nkey Ctrl+A\ntype 90\nkey Return\nkey Ctrl+Shift+S\n"
        "click \"save as.look\"\nclick \"save as.purpose\"\ntype For tests\nclick \"save as.save\"\nwait frames 3\n");
    EXPECT_EQ(saved(), kScene);
    EXPECT_THAT(saved("looks/smoke.toml"), testing::AllOf(HasSubstr("\"For tests\""), HasSubstr("birth_rate = 90\n")));
    write_bytes(folder_ / "taken.toml", "[[container]]\nlook = \"smoke\"\nname = \"taken\"\n");
    render("taken.toml", 1);
}

struct OpeningCase {
    const char* name;
    const char* script;  // opens "Größe 2.toml" in the folder "mit Lücke", while another scene is open
};

const OpeningCase kOpenings[] = {
    {"ByItsPath", "key Ctrl+O\nwait open.file\nwait frames 3\ntype mit Lücke/Größe 2.toml\nkey Return\n"},
    {"AfterWrongPaths",
     "key Ctrl+O\nwait open.file\nwait frames 3\ntype absent.toml\nkey Return\nwait open.mistake\n"
     "key Ctrl+A\ntype script.txt\nkey Return\nwait open.mistake\n"
     "key Ctrl+A\ntype mit Lücke/Größe 2.toml\nkey Return\n"},
    {"FromTheList",
     "click Open\nclick \"open.name.mit Lücke/\" double\nclick \"open.name.Größe 2.toml\"\nkey Return\n"},
    {"WithArrowKeys",
     "key Ctrl+O\nwait open.file\nwait frames 3\ntype mit Lücke\nkey Return\nwait \"open.name.Größe 2.toml\"\n"
     "wait frames 3\nkey Down\nkey Down\nkey Return\n"},
    {"ByDropping", "drop mit Lücke/Größe 2.toml\n"},
    {"FromTheRecentFiles",
     "key F1\nwait frames 3\ndrop mit Lücke/Größe 2.toml\nwait picture\ndrop scene.toml\nwait picture\n"
     "key F1\nclick \"recent.Größe 2\"\n"},
};

class Openings : public StudioWindow, public testing::WithParamInterface<OpeningCase> {};

TEST_P(Openings, ShowTheFileAndKeepUnsavedWork) {
    const std::string other = "mit Lücke/Größe 2.toml";
    std::filesystem::create_directory(folder_ / "mit Lücke");
    write_bytes(folder_ / other, replaced("length = 2", "length = 3"));
    const std::string edit = "wait picture\nclick parameter.birth_rate ctrl\nkey Ctrl+A\ntype 7\nkey Return\n";
    const std::string save = "wait picture\nclick reset.number_of_particles\nkey Ctrl+S\nwait frames 3\n";
    run("scene.toml", edit + GetParam().script + "wait frames 3\n" + save + "key F1\nclick recovery.take\n" + save);
    std::string expected = replaced("birth_rate = 30 ", "birth_rate = 7 ");
    EXPECT_EQ(saved(), expected.erase(expected.find("number_of_particles"), 26));
    expected = replaced("length = 2", "length = 3");
    EXPECT_EQ(saved(other), expected.erase(expected.find("number_of_particles"), 26));
}

INSTANTIATE_TEST_SUITE_P(StudioWindow, Openings, testing::ValuesIn(kOpenings),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(StudioWindow, AFileThatExistsIsReplacedByTheSecondEnter) {
    write_bytes(folder_ / "taken.v1.toml", "# mine\n");
    const std::string save =
        "wait picture\nkey Ctrl+Shift+S\nwait \"save as.file\"\nwait frames 3\nkey Ctrl+A\n"
        "type taken.v1\nkey Return\nwait frames 3\n";
    run("scene.toml", save + "key Escape\nwait frames 3\n");
    EXPECT_EQ(saved("taken.v1.toml"), "# mine\n");
    run("scene.toml", save + "key Return\nwait frames 3\n");
    EXPECT_EQ(saved("taken.v1.toml"), kScene);
    // "places" overwrites the file, as another program might do.
    run("scene.toml",
        "wait picture\nclick reset.number_of_particles\nplaces scene.toml\nkey Ctrl+S\nwait \"save as.file\"\n"
        "wait frames 3\nkey Return\nwait frames 3\nkey Return\nwait frames 3\n");
    EXPECT_EQ(saved(), replaced("number_of_particles = 100\n", ""));
}

TEST_F(StudioWindow, LongWorkIsStopped) {
    write_bytes(folder_ / "scene.toml", replaced("length = 2", "length = 600"));
    const std::string output = run("scene.toml",
                                   "wait picture\nkey Space\nclick timeline@0.95,0.5\nclick \"Stop here\"\n"
                                   "wait picture\nreport\nkey Ctrl+E\nclick export.start\n"
                                   "click export.cancel\nwait export\n");
    int frame = 0;
    ASSERT_EQ(std::sscanf(output.c_str(), "frame %d,", &frame), 1) << output;
    EXPECT_THAT(frame, testing::AllOf(testing::Gt(100), testing::Lt(5000)));
    for (const auto& file : std::filesystem::directory_iterator(folder_))
        EXPECT_THAT(file.path().filename().string(), Not(testing::AnyOf(HasSubstr("mp4"), HasSubstr("tovu-export"))));
}

TEST_F(StudioWindow, TheKeyboardAloneLeadsFromTheGalleryToAStill) {
    run("",
        "wait scene.scene\nkey Right\nkey Return\nwait picture\nkey Ctrl+E\nwait export.still\nwait frames 3\n"
        "key Up\nkey Right\nkey Return\nkey Down\nkey Down\nkey Return\nwait export\n");
    EXPECT_FALSE(pixels("scene.png").empty());
}

TEST_F(StudioWindow, ParametersOfAnyPluginAreEdited) {
    write_bytes(folder_ / "gather.toml", std::string(kScene) + R"(
[[container]]
name = "word"
geometry = { kind = "text", text = "A" }
[[container]]
name = "gather"
plugin = "TovuGather"
parameters = { smoke_container = "smoke" }
)");
    run("gather.toml",
        "wait picture\nclick container\nwait container.gather\nclick container.gather\nclick search\n"
        "type damping\nkey Return\nwait frames 3\nkey Ctrl+A\ntype 2.5\nkey Return\nwait picture\nkey Ctrl+S\nwait "
        "frames 3\n");
    EXPECT_THAT(saved("gather.toml"), HasSubstr("parameters = { smoke_container = \"smoke\", damping = 2.5 }"));
}

TEST_F(StudioWindow, AButtonOfThePluginActsOnTheRunAlone) {
    const std::string output = run("scene.toml",
                                   "wait picture\nkey Space\nclick timeline@0.5,0.5\nwait picture\nreport\n"
                                   "click search\ntype TovuSmoke\nwait press.reset\nwait frames 3\nclick press.reset\n"
                                   "wait frames 3\nreport\nkey Escape\nkey Ctrl+S\nwait frames 3\n");
    int frame = 0, before = 0, after = -1;
    ASSERT_EQ(std::sscanf(output.c_str(), "frame %d, %d alive%*[^\n]\nframe %*d, %d alive", &frame, &before, &after), 3)
        << output;
    EXPECT_GT(before, 0);
    EXPECT_EQ(after, 0);
    EXPECT_EQ(saved(), kScene);
}

TEST_F(StudioWindow, AKilledStudioLeavesItsWork) {
    FILE* pipe = popen((command("scene.toml",
                                "wait picture\nclick parameter.birth_rate ctrl\nkey Ctrl+A\ntype 77\nkey Return\n"
                                "wait picture\nwait frames 5\nreport\nwait nothing\n") +
                        " & echo $!; wait")
                           .c_str(),
                       "r");
    std::array<char, 256> line{};
    ASSERT_NE(std::fgets(line.data(), line.size(), pipe), nullptr);
    const int process = std::atoi(line.data());
    ASSERT_NE(std::fgets(line.data(), line.size(), pipe), nullptr);  // the report
    kill(process, SIGKILL);
    pclose(pipe);
    EXPECT_EQ(saved(), kScene);
    run("", "click recovery.take\nwait picture\nkey Ctrl+S\nwait frames 3\n");
    EXPECT_EQ(saved(), replaced("birth_rate = 30 ", "birth_rate = 77 "));
    // A studio that is closed without saving leaves its work too.
    run("scene.toml", "wait picture\nclick reset.number_of_particles\nwait frames 3\n");
    run("", "click recovery.take\nwait picture\nkey Ctrl+S\nwait frames 3\n");
    EXPECT_THAT(saved(), Not(HasSubstr("number_of_particles")));
}

TEST_F(StudioWindow, ASceneWithMistakesOpensAndSaysWhere) {
    write_bytes(folder_ / "wrong.toml", replaced("length = 2", "lenght = 2"));
    EXPECT_THAT(run("wrong.toml", "wait picture\nreport\n"), HasSubstr("wrong.toml:4:1: "));
    write_bytes(folder_ / "wrong.toml", replaced("birth_rate = 30", "birth_rat = 30"));
    EXPECT_THAT(run("wrong.toml", "wait picture\nreport\n"), HasSubstr("did you mean 'birth_rate'?"));
}

TEST_F(StudioWindow, AnySizeIsShown) {
    run("scene.toml",
        "wait picture\nsize 40 30\nwait frames 5\nsize 1 1\nwait frames 5\nsize 3000 200\nwait frames 5\n"
        "size 900 600\nwait frames 5\ndrag parameter.birth_rate 90 0\nwait picture\nkey Ctrl+S\nwait frames 3\n");
    EXPECT_THAT(saved(), testing::ContainsRegex("\nbirth_rate = [4-9][0-9.]+ "));
}

TEST_F(StudioWindow, EndsInPeaceAfterRandomEvents) {
    const tovu::RandomSeed seed;
    std::string script = "size 640 400\nwait picture\n";
    // Escape closes windows and full screen, so that the events reach the panels.
    for (unsigned i = 0; i < 10; ++i)
        script += "random " + std::to_string(seed.value + i) + " 500\nkey Escape\nkey Escape\n";
    run("scene.toml", script);
}

}  // namespace
