// Tests of the program: exit statuses, messages, files.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "annotated_scene.h"
#include "command_fixture.h"
#include "commit.h"

namespace {

using testing::HasSubstr;

const std::pair<const char*, const char*> kMistakes[] = {
    {"lint none.toml", "none.toml: cannot be read: No such file or directory"},
    {"lint none", "unknown look 'none'"},
    {"rendr tiny.toml", "unknown command 'rendr': did you mean 'render'?"},
    {"render none.toml -o x.png --at 0", "none.toml: cannot be read: No such file or directory"},
    {"render tiny.toml -o x.avi", "-o x.avi: must end in .mp4, .mov, .webm, .webp, .gif, .png or .exr; numbered"},
    {"render tiny.toml -o f%d.mov", "-o f%d.mov: numbered pictures must end in .png or .exr"},
    {"render tiny.toml -o x.mp4 --key k.png", "--key k.png: a fill and its key must be .mp4 or .mov files"},
    {"render tiny.toml -o x.mp4 -o y.mp4 --key k.mp4", "--key k.mp4: needs exactly one -o, the fill"},
    {"render tiny.toml -o x.mp4 --key x.mp4", "--key x.mp4: writes x.mp4, as -o x.mp4 does; give each"},
    {"render tiny.toml -o x.mov --alpha both", "--alpha both: must be straight or premultiplied"},
    {"render tiny.toml -o x.mp4 --alpha straight", "--alpha straight: x.mp4 has no alpha"},
    {"render tiny.toml -o f%d.png --alpha premultiplied", "alpha in .png files is straight, in .exr files premult"},
    {"render tiny.toml -o f%d.exr --alpha straight", "alpha in .png files is straight, in .exr files premultiplied"},
    {"render tiny.toml -o f%d.png --bits 10", "--bits 10: must be 8 or 16"},
    {"render tiny.toml -o f%d.exr --bits 16", "--bits 16: is for .png files; there is none"},
    {"render tiny.toml -o f%d.png --sheet 4x3", "--sheet 4x3: needs an -o such as sheet.png"},
    {"render tiny.toml -o s.png --sheet 4", "--sheet 4: must be COLUMNSxROWS of two or more pictures, 1 to 100 each"},
    {"render tiny.toml -o s.png --sheet 4x3", "--sheet 4x3: has 12 pictures, but there are only 10 frames"},
    {"render tiny.toml -o s.png --sheet 2x2 --at 0", "--at: is for single pictures; s.png takes --frames A-B"},
    {"render tiny.toml -o x.mov --interlace odd", "--interlace odd: must be top or bottom"},
    {"render tiny.toml -o x.mov --interlace top", "needs 50 or 59.94 pictures per second, two for each frame, not 25"},
    {"render tiny.toml -o x.mov --rate 50 --frames 0-2 --interlace top", "but there are 3; give --frames A-B"},
    {"render tiny.toml -o f%d.png --rate 50 --interlace top", "--interlace top: is for videos; there is none"},
    {"render tiny.toml -o x.webm --rate 59.94 --frames 0-1 --interlace top", "x.webm: interlaced videos must be .mov"},
    {"render tiny.toml -o x.mp4 --codec av1", "--codec av1: must be h264 or h265"},
    {"render tiny.toml -o x.mov --codec h265", "--codec h265: is for .mp4 files; there is none"},
    {"render tiny.toml -o x.png", "one picture needs --at SECONDS"},
    {"render tiny.toml -o x.png --at 0.4", "--at 0.4: must be a time in seconds from 0 and below 0.4"},
    {"render tiny.toml -o x.png --at 0 --frames 0-1", "--at and --frames: give only one of them"},
    {"render tiny.toml -o x.mp4 --at 0", "--at: is for single pictures; x.mp4 takes --frames A-B"},
    {"render tiny.toml -o f%d.png -o x.mp4 -o ./x.mp4", "-o ./x.mp4: writes ./x.mp4, as -o x.mp4 does"},
    {"render tiny.toml -o f%d.png -o f%02d.png", "-o f%02d.png: writes frow.png.json, as -o f%d.png does"},
    {"render tiny.toml -o f3.png --at 0 -o f%d.png", "-o f%d.png: writes f3.png, as -o f3.png does; give each its own"},
    {"render tiny.toml -o new/%d.png -o x.mp4 --size 31x24", "x.mp4: 31 x 24 pixels: in .mp4 files the width must be"},
    {"render tiny.toml -o x.mp4 --frames 3-2", "--frames 3-2: must be A-B"},
    {"render tiny.toml -o x.mp4 --frames 5-10", "must be A-B with 0 <= A <= B <= 9; the scene has 10 frames"},
    {"render tiny.toml -o x.mp4 --size 31x24", "31 x 24 pixels: in .mp4 files the width must be a multiple of 2"},
    {"render tiny.toml -o x.png --at 0 --size 0x24", "--size 0x24: must be WIDTHxHEIGHT"},
    {"render tiny.toml -o x.png --at 0 --rate 0.5", "--rate 0.5: must be frames per second from 1 to 1000"},
    {"render tiny.toml -o x.png --at 0 --seed -1", "--seed -1: must be a whole number from 0 to 4294967295"},
    {"render tiny.toml -o x.png --at 0 --samples 0", "--samples 0: must be a whole number from 1"},
    {"render tiny.toml -o f/%s.png", "-o f/%s.png: "},
    {"render tiny.toml -o no/x.png --at 0", "-o no/x.png: there is no folder 'no'"},
    {"render tiny.toml -o /proc/x.png --at 0", "/proc"},
    {"render tiny.toml -o x.png --at 0 --set smoke.birth_rate=-1", "--set smoke.birth_rate=-1: "},
    {"render tiny.toml -o x.png --at 0 --set smok.birth_rate=1", "no container 'smok' carries a plug-in: did you"},
    {"render tiny.toml -o x.png --at 0 --trace no/t.json", "--trace no/t.json: there is no folder 'no'"},
    {"render tiny.toml -o x.png --at 0 --plugin-timeout -1",
     "--plugin-timeout -1: must be a time in seconds from 0, for no limit, to 86400"},
    {"hash tiny.toml --every 0", "--every 0: must be a whole number from 1 to 1000000000"},
    {"hash tiny.toml --frames 5-10", "must be A-B with 0 <= A <= B <= 9; the scene has 10 frames"},
    {"looks save tiny.toml smok", "tiny.toml: unknown container 'smok': did you mean 'smoke'?"},
    {"looks diff ./no.toml steam", "there is no look file"},
    {"looks retime steem 50", "unknown look 'steem': did you mean 'steam'?"},
    {"looks retime steam 0", "0: must be frames per second from 1 to 1000"},
    {"record tiny.toml -o calls.txt --frames 11", "--frames 11: must be a whole number from 1 to 10, the frames of"},
    {"record tiny.toml -o tiny.toml", "-o tiny.toml: the scene reads this file"},
    {"replay tiny.toml", "tiny.toml:1: not a recording of calls"},
    {"render . -o x.png --at 0", ".: is a folder; name a scene file"},
    {"render images.toml -o m1.png --at 0", "-o m1.png: the scene reads this file"},
    {"render images.toml -o m%d.png", "-o m1.png: the scene reads this file"},
    {"render tiny.toml -o folder%d.png", "-o folder%d.png: folder3.png is a folder; rename it or choose another name"},
    {"render tiny.toml -o x.png --at 0 --trace tiny.toml", "--trace tiny.toml: the scene reads this file"},
};

TEST_F(Command, MistakesEndWithStatus2AndLeaveNothing) {
    write("m1.png", file_bytes(TOVU_SOURCE_DIR "/scenes/assets/logo.png"));
    write("images.toml", "container = [{ name = 'a' }]\nimages = { m = 'm1.png' }\n");
    fs::create_directory(folder / "work" / "folder3.png");
    for (const auto& [arguments, message] : kMistakes) {
        SCOPED_TRACE(arguments);
        expect_mistake(arguments, message);
    }
}

TEST_F(Command, HashPrintsADigestOfEveryNthFrame) {
    write("older.toml", "prewarm = 0.04\n" + bytes("tiny.toml"));
    const std::string all = run("hash tiny.toml").output;
    EXPECT_EQ(10, std::count(all.begin(), all.end(), '\n'));
    std::istringstream some(run("hash tiny.toml older.toml --every 4 --frames 1-8").output);
    std::string lines[4];
    for (std::string& line : lines) std::getline(some, line);
    EXPECT_THAT(lines, testing::Each(testing::MatchesRegex("[a-z]+ [48] [0-9a-f]{16}")));
    EXPECT_THAT(all, testing::AllOf(HasSubstr(lines[0] + "\n"), HasSubstr(lines[1] + "\n")));
    EXPECT_NE(lines[0].substr(5), lines[2].substr(6)) << "older smoke";
    EXPECT_THAT(lines[2], testing::StartsWith("older 4 "));
}

// The replayed plug-in differs from the recorded one in one rule.
TEST_F(Command, ReplayFindsAChangedPlugin) {
    const std::string plugins = TOVU_BINARY_DIR "/plugins/faulty/";
    write("wheel.toml", "length = 0.1\n[[container]]\nname = 'a'\nplugin = '" + plugins + "faulty_none.so'\n");
    EXPECT_EQ(0, run("record wheel.toml -o wheel.txt").status);
    const Outcome same = run("replay wheel.txt " + plugins + "faulty_none.so");
    EXPECT_EQ(0, same.status);
    EXPECT_THAT(same.output, testing::MatchesRegex("wheel.txt: 5 frames with [0-9]+ calls, no difference\n"));
    const std::pair<const char*, const char*> cases[] = {
        {"draws_in_frame",
         "frame 0, PLUGIN_NEW_GEOM(\"a\", 0)\n  recorded: _api__object_valid(-1)\n"
         "  now:      glColor4f(1, 1, 1, 1)\n"},
        {"end_forgotten", "frame 0, PLUGIN_RENDER_OPENGL(\"a\", 0, 1)\n  recorded: glEnd()\n  now:      "},
    };
    for (const auto& [fault, difference] : cases) {
        const Outcome changed = run("replay wheel.txt " + plugins + "faulty_" + fault + ".so");
        EXPECT_EQ(1, changed.status);
        EXPECT_THAT(changed.output, testing::ContainsRegex("^wheel.txt:[0-9]+: the first difference, in "));
        EXPECT_THAT(changed.output, HasSubstr(difference));
    }
}

// Mistakes that are found only with the plug-in's registration or with another file.
constexpr const char* kMistakesAboutPlugins = R"(container = [
    { name = "a", parameters = { gravity = 1, birth_rat = 3 } },  #! 59: parameter 'birth_rat' is not known to
    { name = "b", parameters = { number_of_particles = 4294967297 } },  #! 56: parameter 'number_of_particles' takes
    { name = "c", parameters = { sort = 5 } },  #! 41: parameter 'sort' takes true or false, not 5
    { name = "d", parameters = { spawn_type = "Cub" } },  #! 47: parameter 'spawn_type' takes one of "Cube", "Sphere"
    { name = "e", parameters = { spawn_cont_name = "aa" } },  #! 52: parameter 'spawn_cont_name' names the unknown
    { name = "f", parameters = { spawn_image = "puf" } },  #! 48: parameter 'spawn_image' names the unknown image
    { name = "g", texture = "pufff", plugin = "smoke" },  #! 29: unknown texture 'pufff': did you mean 'puff'?
    { name = "lit", light = { image = "puf", size = [1, 1] } },  #! 39: unknown image 'puf': did you mean 'puff'?
    { name = "h", plugin = "none.so" },  #! 28: none.so: not a plug-in library
    { name = "j", plugin = "TovuGather", texture = ["puff", "ring"] },  #! 52: the notes beside TovuGather do not say
    { name = "k", texture = ["puff", "rng"] },  #! 29: several textures are for a container that carries a plug-in #! 29: unknown texture 'rng'
    { name = "l", texture = ["puff", "ring"], plugin = "smoke" },  #! 29: the container of texture 2 would be 'l/2', which
    { name = "l/2" },
    { name = "i", plugin = "TovuGathr" },  #! 28: unknown plug-in 'TovuGathr': did you mean 'TovuGather'?
]
at = [
    { time = 1, container = "g", parameters = { gravitiy = 1 } },  #! 60: parameter 'gravitiy' is not known
    { time = 1, container = "g", press = "rest" },  #! 42: TovuSmoke has no push button 'rest': did you mean 'reset'?
    { time = 1, container = "g", burst = 25001 },  #! 42: burst must be a whole number from 1 to 25000, not 25001
    { time = 1, container = "j", burst = 1 },  #! 42: the notes beside TovuGather do not say
    { time = 1, image = "logo", file = "dot.png" },  #! 40: dot.png: not a PNG
]
track = [
    { container = "a", parameter = "gravitiy", keys = [{ time = 0, value = 1 }] },  #! 76: parameter 'gravitiy' is not known
    { container = "a", parameter = "life_time", keys = [{ time = 0, value = -1 }] },  #! 77: parameter 'life_time' takes
    { container = "a", parameter = "sort", keys = [{ time = 0, value = true }, { time = 1, value = false, ease = "step" }] },
    { container = "b", parameter = "sort", keys = [{ time = 0, value = true },
      { time = 1, value = false },  #! 27: parameter 'sort' is neither a number nor a curve: only a key with ease = "step"
    ] },
    { container = "a", parameter = "color", keys = [{ time = 0, value = "0 1 1 1 1 0 0 0" },
      { time = 1, value = "0 1 1 1 0.5 0 0 0 1 0 0 0" },  #! 27: curves that are … there are 3 here, 2 in the key before
      { time = 2, value = "0 red" },  #! 27: curves that are blended must hold numbers only
    ] },
]
images.logo = "s1.png"
images.dot = "dot.png"  #! 14: dot.png: not a PNG
images.sizes = "s%d.png"  #! 16: s2.png has 128 x 128 pixels, s1.png has 256 x 256 pixels
)";

constexpr const char* kMistakesAboutShapes = R"(container = [{ name = "a" }, { name = "b" },
  { name = "c", geometry = { kind = "plate", image = "puf", width = 1, height = 1 } },  #! 54: unknown image 'puf': did
]
track = [
  { container = "a", property = "geometry", keys = [
    { time = 0, value = { kind = "rectangle", width = 1, height = 1 } },
    { time = 1, value = { kind = "ellipse", width = 1, height = 1 } },  #! 25: shapes that deform … 64 corners in outline 1 here
  ] },
  { container = "b", property = "geometry", keys = [
    { time = 0, value = { kind = "text", text = "I" } },
    { time = 1, value = { kind = "text", text = "i" } },  #! 25: shapes that deform … there are 2 outlines here
  ] },
]
)";

TEST_F(Command, MistakesAboutThePluginNameThePlaceInTheScene) {
    write("dot.png", "not a picture");
    write("s1.png", file_bytes(TOVU_SOURCE_DIR "/scenes/assets/logo.png"));
    write("s2.png", file_bytes(TOVU_SOURCE_DIR "/scenes/assets/logo_flame.png"));
    for (const char* text : {kMistakesAboutPlugins, kMistakesAboutShapes}) {
        write("bad.toml", text);
        EXPECT_THAT(messages_about("bad.toml", expect_mistake("render bad.toml -o x.mp4", "bad.toml:")),
                    testing::UnorderedElementsAreArray(annotated_messages(text, "bad.toml")));
    }
}

constexpr const char* kDoubtful = R"(container = [
    { name = "a", parameters = { color = "red" } },  #! 42: parameter 'color' takes two points … ; "red" is not a
    { name = "b", parameters = { color = "0 255 255 255 1 0 0 0" } },  #! 42: parameter 'color' … ; 255 is not from 0
    { name = "c", parameters = { color = "0 1 1 1 1 0 0" } },  #! 42: parameter 'color' … ; it has 7 numbers
    { name = "d", parameters = { color = "0 1 1 1  0.5 1 1 1 0.5 0 0 0 1 +0 0e3 0" } },
    { name = "e", parameters = { alpha_curve = "0 1 0.5 1 0.5 0" } },  #! 48: parameter … position 0.5 does not come
    { name = "f", parameters = { spawn_type = "Image" } },  #! 47: spawn_type = "Image" has no effect … 'spawn_image' is
    { name = "g", parameters = { spawn_type = 2 } },  #! 47: spawn_type = "Container" has no effect while
    { name = "h", parameters = { spawn_type = "Image", spawn_image = "puff" } },  #! 70: the mask 'puff' covers 0 x 0
    { name = "i", parameters = { spawn_image = "puff" } },  #! 48: the mask 'puff' covers 0 x 0
    { name = "j", geometry = { kind = "text", text = "a\U00013000" } },  #! 54: font … has no glyph for U+13000
]
at = [
    { time = 1, container = "i", parameters = { spawn_type = "Image" } },
    { time = 1, container = "i", parameters = { color = "" } },  #! 57: parameter 'color' … ; it has 0 numbers
]
track = [
    { container = "h", parameter = "alpha_curve", keys = [{ time = 0, value = "0 2 1 0" }] },  #! 79: parameter … 2 is not from 0
]
)";

TEST_F(Command, LintAndRenderWarnOfProbableMistakes) {
    write("odd.toml", kDoubtful);
    const Outcome lint = run("lint odd.toml");
    EXPECT_EQ(1, lint.status) << lint.errors;
    EXPECT_THAT(messages_about("odd.toml", lint.output),
                testing::UnorderedElementsAreArray(annotated_messages(kDoubtful, "odd.toml")));
    const Outcome silent = run("lint tiny.toml");
    EXPECT_EQ(0, silent.status);
    EXPECT_THAT(silent.output, testing::IsEmpty());
    const Outcome outcome = run("render odd.toml -o x.png --size 8x8 --at 0");
    EXPECT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_THAT(messages_about("warning: odd.toml", outcome.errors),
                testing::UnorderedElementsAreArray(annotated_messages(kDoubtful, "warning: odd.toml")));
}

TEST_F(Command, WarnsOfAVideoThatLosesTheAlpha) {
    write("clear.toml", "length = 0.04\ncontainer = [{ name = 'a' }]\n");
    const std::string both = run("render clear.toml -o x.mp4 -o x.mov -o x.gif --size 8x8").errors;
    EXPECT_THAT(both, HasSubstr("warning: x.mp4: has no alpha, so that the scene, which has no background, is over"));
    EXPECT_THAT(both, HasSubstr("warning: x.gif: shows only what is at least half opaque"));
    EXPECT_THAT(both, testing::Not(HasSubstr("warning: x.mov")));
    EXPECT_THAT(run("render clear.toml -o x.mp4 --key y.mp4 --size 8x8").errors, testing::Not(HasSubstr("warning")));
    EXPECT_THAT(run("render tiny.toml -o x.mp4").errors, testing::Not(HasSubstr("warning")));
}

TEST_F(Command, ASheetShowsFramesFromTheFirstToTheLast) {
    const Outcome outcome = run("render tiny.toml -o sheet.png --sheet 2x2 --frames 0-7");
    EXPECT_EQ("sheet.png: 4 frames\n", outcome.output) << outcome.errors;
    EXPECT_THAT(run_shell("ffprobe -v error -show_frames sheet.png").output,
                testing::AllOf(HasSubstr("TAG:Frame=0 2 4 7\n"), HasSubstr("width=32\nheight=24\n")));
}

TEST_F(Command, PicturesHaveTextEntries) {
    ASSERT_EQ(0, run("render tiny.toml -o x.png -o x.exr -o y%d.png --at 0.2 --frames 5 --bits 16 --seed 7").status);
    EXPECT_TRUE(bytes("x.png") == bytes("y5.png")) << "0.2 s of 25 frames a second";
    for (const char* picture : {"x.png", "x.exr"})
        EXPECT_THAT(
            run_shell(std::string("ffprobe -v error -show_frames ") + picture).output,
            testing::AllOf(HasSubstr("TAG:Software=tovu " TOVU_VERSION "\n"), HasSubstr("TAG:Scene=tiny.toml\n"),
                           HasSubstr("TAG:Seed=7\n"), HasSubstr("TAG:Frame=5\n")))
            << picture;
}

TEST_F(Command, WarnsOfFramesLeftByALongerRender) {
    write("short.toml", "length = 0.04\ncontainer = [{ name = 'a' }]\n");
    for (const char* name : {"f1.png", "f2.png", "f3.png", "g5.png"}) write(name, "");
    EXPECT_THAT(run("render short.toml --size 8x8 -o f%d.png").errors,
                HasSubstr("warning: f2.png to f3.png are from an earlier render: this scene has 2 frames\n"));
}

// A look with changes of the scene is saved as a new look, which gives the same pictures without these changes.
TEST_F(Command, LooksAreSavedComparedAndConverted) {
    fs::create_directory(folder / "work" / "looks");
    write("looks/plume.toml", R"(purpose = "A plume"
rate = 50
images = { map = { file = "rise", frame_rate = 3 }, flip = "flip%d.png" }
[[layer]]
name = "puffs"
position = [3, 0, 0]
texture = "puff_lit_a"
parameters = { birth_rate = 200, air_resistance = 36, gravity = -2, wind_image = "map", use_wind_image = true }
)");
    for (const char* picture : {"looks/flip0.png", "looks/flip1.png"})
        fs::copy(TOVU_SOURCE_DIR "/scenes/assets/logo.png", folder / "work" / picture);
    const std::string head = "size = [32, 24]\nframe_rate = 25\nlength = 0.4\n[[container]]\nname = \"smoke\"\n";
    write("changed.toml", "images = { own = \"looks/flip0.png\" }\n" + head + R"(look = "plume"
parameters = { wind_force = 20, wind_image_range_x = 100, wind_image_range_y = 100, birth_rate = 100 }
layers.puffs = { texture = "own", parameters = { gravity = 0 } }
)");
    write("nested.toml", head + R"(opacity = 0.9
[[container.container]]
name = "box"
position = [20, 0, 0]
opacity = 0.5
geometry = { kind = "rectangle", width = 90, height = 40, fill = [1, 1, 1] }
[[container.container.container]]
name = "upper box"
position = [0, 60, 0]
geometry = { kind = "rectangle", width = 90, height = 40, fill = [1, 0, 0] }
[[container.container.container]]
name = "no smoke"
parameters = { birth_rate = 0 }
)");
    for (const std::string name : {"changed", "nested"}) {
        const Outcome saved = run("looks save " + name + ".toml smoke -o looks/saved_" + name + ".toml");
        EXPECT_EQ(0, saved.status) << saved.errors;
        write("plain.toml", head + "look = \"saved_" + name + "\"\n");
        for (const std::string& scene : {name, std::string("plain")})
            ASSERT_EQ(0, run("render " + scene + ".toml -o " + scene + ".mov --frames 9").status) << name;
        EXPECT_TRUE(bytes(name + ".mov") == bytes("plain.mov")) << name << "; pictures hold the scene's name";
    }
    EXPECT_THAT(run("looks save changed.toml smoke").output, HasSubstr("looks/smoke.toml"));
    expect_mistake("looks save changed.toml smoke", "looks/smoke.toml: there is such a look already");

    write("own look.toml", head + "[[container.container]]\nname = \"in it\"\nlook = \"plume\"\n");
    expect_mistake("looks save 'own look.toml' smoke", "\"in it\" has a look of its own: save it alone");
    write("outside.toml", "container = [{ name = 'a' }, { name = 'smoke', parameters = { spawn_cont_name = 'a' } }]");
    expect_mistake("looks save outside.toml smoke", "spawn_cont_name names the container 'a', which is not saved");

    EXPECT_THAT(run("looks").output, testing::AllOf(HasSubstr("plume"), HasSubstr("A plume"), HasSubstr("steam")));
    ASSERT_EQ(0, run("looks retime plume 25 -o back.toml").status);
    const std::string differences = run("looks diff plume back.toml").output;
    for (const char* line :
         {"rate: 50 -> 25\n", "puffs.air_resistance: 36 -> 70.704\n", "puffs.gravity: -2 -> -4.07469\n"})
        EXPECT_THAT(differences, HasSubstr(line));
    EXPECT_THAT(differences, HasSubstr("-> { file = \"looks/flip%d.png\", frame_rate = 50 }")) << "keeps its speed";
    EXPECT_EQ(5, std::count(differences.begin(), differences.end(), '\n')) << differences;
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

TEST_F(Command, ATraceHasEachCallOfEachFrame) {
    const Outcome outcome = run("render tiny.toml -o frames/%d.png --frames 0-2 --trace trace.json");
    ASSERT_EQ(0, outcome.status) << outcome.errors;
    const auto trace = nlohmann::json::parse(bytes("trace.json"));
    int passes = 0;
    for (const auto& section : trace.at("traceEvents")) {
        passes += section.at("name") == "PLUGIN_RENDER_OPENGL";
        EXPECT_GE(section.at("dur").get<double>(), 0);
    }
    EXPECT_EQ(3, passes);
}

TEST_F(Command, ARangeAndAStillEqualTheWholeScenesFrames) {
    const Outcome all = run("render tiny.toml -o all/%02d.png");
    EXPECT_EQ(0, all.status);
    EXPECT_EQ("all/%02d.png: 10 frames\n", all.output);
    EXPECT_THAT(all.errors, testing::AllOf(HasSubstr("10/10"), testing::Not(HasSubstr("\r")))) << "no terminal";
    EXPECT_THAT(all.errors, testing::Not(HasSubstr("warning"))) << "the plug-in keeps to the contract";
    const Outcome both = run("render tiny.toml -o part_%d.png --frames 6-7 -o still.png --at 0.27");
    EXPECT_EQ("part_%d.png: 2 frames\nstill.png: 1 frame\n", both.output) << "frame 6 of 25 a second";
    ASSERT_EQ(0, run("render tiny.toml -o S.PNG --at 0.27 -o F%d.EXR --frames 6-7 -o X.MP4 --codec h265").status);
    EXPECT_TRUE(bytes("S.PNG") == bytes("still.png"));
    EXPECT_THAT(bytes("F6.EXR"), testing::StartsWith("\x76\x2f\x31\x01"));
    EXPECT_EQ("x.mov: 5 frames\n", run("render tiny.toml --rate 50 --frames 0-9 -o x.mov --interlace top").output);
    ASSERT_EQ(0, run("render tiny.toml -o without.png --at 0.27 --set smoke.birth_rate=0").status);
    EXPECT_FALSE(bytes("all/06.png") == bytes("all/07.png"));
    EXPECT_TRUE(bytes("all/06.png") == bytes("part_6.png"));
    EXPECT_TRUE(bytes("all/07.png") == bytes("part_7.png"));
    EXPECT_TRUE(bytes("all/06.png") == bytes("still.png"));
    EXPECT_FALSE(bytes("all/06.png") == bytes("without.png"));
    for (const char* none : {"all/10.png", "part_5.png", "part_8.png"}) EXPECT_EQ(bytes(none), "") << none;
}

const std::string kFaulty = TOVU_BINARY_DIR "/plugins/tests/faulty_at_work.so";
const std::string kNewGeom = "PLUGIN_NEW_GEOM of Faulty in 'faulty', frame 1 ";
const std::string kRender = "PLUGIN_RENDER_OPENGL of Faulty in 'faulty', frame 1 ";

// A fault of the faulty plug-in and the message of the command.
struct Fault {
    const char* fault;
    std::string message;
    const char* options = "";
};

const Fault kFaults[] = {
    {"loading:crash", "loading of " + kFaulty + " crashed: SIGSEGV (bad memory access)"},
    {"loading:throw", "loading of " + kFaulty + " threw a C++ exception: no more smoke"},
    {"PLUGIN_INIT:exit", "PLUGIN_INIT of " + kFaulty + " called exit"},
    {"PLUGIN_INIT_FUNCTION:abort", "PLUGIN_INIT_FUNCTION of Faulty in 'faulty', frame -1 crashed: SIGABRT (abort)"},
    {"PLUGIN_NEW_GEOM:overflow", kNewGeom + "crashed: SIGSEGV"},
    {"PLUGIN_NEW_GEOM:trap", kNewGeom + "crashed: SIGILL"},
    {"PLUGIN_NEW_GEOM:loop", kNewGeom + "did not return within 1.5 seconds (--plugin-timeout)", "--plugin-timeout 1.5"},
    {"PLUGIN_RENDER_OPENGL:throw a number", kRender + "threw a C++ exception\n"},
    {"PLUGIN_RENDER_OPENGL:quick_exit", kRender + "called exit"},
    {"PLUGIN_DISPATCHER_CALLBACK:crash", "PLUGIN_DISPATCHER_CALLBACK of Faulty in 'asked', frame -1 crashed: SIGSEGV"},
    {"PLUGIN_CLEANUP_FUNCTION:exit", "PLUGIN_CLEANUP_FUNCTION of Faulty in 'asked', frame 9 called exit"},
};

// Two containers carry the faulty plug-in: "faulty", which sends "asked" a request in each frame.
class FaultyPlugin : public Command {
  protected:
    void SetUp() override {
        Command::SetUp();
        std::string scene = "size = [32, 24]\nframe_rate = 25\nlength = 0.4\nprewarm = 0.04\n";
        for (const char* name : {"faulty", "asked"})
            scene += std::string("[[container]]\nname = '") + name + "'\nplugin = '" + kFaulty + "'\n";
        write("faulty.toml", scene);
    }
    void TearDown() override { unsetenv("FAULTY"); }

    static void tell(const char* fault) { setenv("FAULTY", fault, 1); }
};

TEST_F(FaultyPlugin, IsNamedAndEndsTheRenderWithStatus2) {
    for (const auto& [fault, message, options] : kFaults) {
        SCOPED_TRACE(fault);
        tell(fault);
        expect_mistake(std::string("render faulty.toml -o x.mp4 ") + options, message);
    }
}

const Fault kComplaints[] = {
    {"PLUGIN_CLEANUP_FUNCTION:complaints",
     "warning: _api__set_geom_changed, called by PLUGIN_CLEANUP_FUNCTION of Faulty in 'asked': 1 is not a handle\n"},
    {"PLUGIN_CLEANUP_FUNCTION:complaints", "warning: 1200 more warnings were dropped after the first 1000\n"},
    {"PLUGIN_RENDER_OPENGL:opengl",
     "warning: PLUGIN_RENDER_OPENGL of Faulty in 'asked': OpenGL: invalid enumerant (9 times)\n"},
    {"PLUGIN_RENDER_OPENGL:opengl",
     "warning: PLUGIN_RENDER_OPENGL of Faulty in 'asked': glEnable(4660): invalid enumerant (9 times)\n",
     "--check-opengl"},
};

TEST_F(FaultyPlugin, ViolationsAreReportedWithItsName) {
    for (const auto& [fault, message, options] : kComplaints) {
        SCOPED_TRACE(message);
        tell(fault);
        const Outcome outcome = run(std::string("render faulty.toml -o x.mp4 ") + options);
        EXPECT_EQ(0, outcome.status);
        EXPECT_THAT(outcome.errors, HasSubstr(message));
    }
}

// Runs `render` in a child process until it has begun to write, then sends it the signal twice. Returns the exit
// status.
int status_after_signal(const fs::path& folder, const char* scene, int signal) {
    const pid_t child = fork();
    if (child == 0) {
        std::signal(signal, SIG_DFL);  // shells ignore it for background processes
        if (chdir(folder.c_str()) != 0 || !std::freopen("/dev/null", "w", stderr)) _exit(99);
        execl(TOVU_PROGRAM, "tovu", "render", scene, "-o", "x.mp4", nullptr);
        _exit(99);
    }
    const auto begun = [&folder] {
        return std::any_of(fs::directory_iterator(folder), fs::directory_iterator(),
                           [](const fs::directory_entry& entry) { return entry.path().extension() == ".part"; });
    };
    int status = 0;
    while (!begun() && waitpid(child, &status, WNOHANG) == 0) usleep(1000);
    for (int i = 0; i < 2; ++i) kill(child, signal);
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(FaultyPlugin, DoesNotKeepASignalFromEndingTheRender) {
    write("long.toml", "size = [32, 24]\nlength = 3600\ncontainer = [{ name = 'a', plugin = 'smoke' }]\n");
    const auto files = file_count();
    tell("PLUGIN_NEW_GEOM:loop");
    for (const char* scene : {"long.toml", "faulty.toml"}) {
        for (const int signal : {SIGINT, SIGTERM}) {
            EXPECT_EQ(128 + signal, status_after_signal(folder / "work", scene, signal));
            EXPECT_EQ(files, file_count());
        }
    }
}

constexpr const char* kProbeAsJson = R"({"name": "Probe", "type": 1, "instance_bytes": 76, "uses_lod": false,
"uses_events": true, "info": [{"name": "info", "text": "A probe"}], "events": ["Work"], "parameters": [
{"index": 0, "name": "count", "label": "Count", "kind": "Int", "default": 3, "minimum": -5.0, "maximum": 10.0},
{"index": 1, "name": "amount", "label": "Amount", "kind": "Float", "default": 0.5, "minimum": 0.0, "maximum": 999999.875},
{"index": 2, "name": "on", "label": "On", "kind": "Bool", "default": true},
{"index": 3, "name": "mode", "label": "Mode", "kind": "Radio", "default": "Fast", "choices": ["Slow", "Fast"]},
{"index": 4, "name": "text", "label": "Text", "kind": "String", "default": "hello", "max_length": 20},
{"index": 5, "name": "target", "label": "Target", "kind": "Container", "default": "", "max_length": 4095},
{"index": 6, "name": "picture", "label": "Picture", "kind": "Image", "default": "", "max_length": 4095}],
"buttons": [{"name": "draw", "label": "Draw", "action": 1}, {"name": "ask", "label": "Ask", "action": 2}]})";

// A copy of the script in a folder without sources, where a command that needs a build would fail.
TEST_F(Command, TheScriptAnswersWithoutABuild) {
    for (const char* name : {"tovu", "CMakeLists.txt"}) fs::copy_file(fs::path(TOVU_SOURCE_DIR) / name, folder / name);
    fs::create_directory(folder / "cmake");
    run_shell("(sed 's/[$]Format:%H[$]/0123456789abcdef0123456789abcdef01234567/' '" TOVU_SOURCE_DIR
              "/cmake/commit.sh' >../cmake/commit.sh)");  // as `git archive` does
    const auto script = [&](const std::string& arguments) {
        return run_shell("env TOVU_NO_INSTALL=1 sh ../tovu " + arguments);
    };
    const Outcome typo = script("rendre tiny.toml -o x.png");
    EXPECT_EQ(2, typo.status);
    EXPECT_THAT(typo.errors, testing::AllOf(HasSubstr("no command 'rendre'"), HasSubstr("the commands are demo, ")));
    EXPECT_EQ("tovu " TOVU_VERSION " (0123456789ab)\n", script("--version").output);
    EXPECT_EQ("tovu " TOVU_VERSION " (" TOVU_COMMIT ")\n", run("--version").output);
    EXPECT_FALSE(fs::exists(folder / "build"));
}

TEST_F(Command, ParamsShowsTheRegistration) {
    const Outcome probe = run("params --json " TOVU_BINARY_DIR "/plugins/tests/probe_plugin.so");
    ASSERT_EQ(0, probe.status) << probe.errors;
    EXPECT_EQ(nlohmann::json::parse(probe.output), nlohmann::json::parse(kProbeAsJson));

    const Outcome smoke = run("params");
    EXPECT_THAT(smoke.output, testing::ContainsRegex("^TovuSmoke: [0-9]+ parameters, 9096 bytes per instance\n"));
    EXPECT_THAT(smoke.output, testing::ContainsRegex(
                                  "\n12 +alpha_curve +Alpha Curve +String +\"0.0 1.0 1.0 0.0\" +at most 4096 bytes\n"));
    EXPECT_THAT(smoke.output,
                testing::ContainsRegex("\n21 +opening_angle_x +Opening Angle X +Float +45 +0 to 360 +degrees\n"));
    EXPECT_THAT(smoke.output, testing::ContainsRegex("\nForces\n30 +gravity .* units per second, per frame\n +Pulls "));
    EXPECT_THAT(run("params TovuGather").output, testing::StartsWith("TovuGather: "));
    for (const char* one : {"params wind_rot_x", "params smoke wind_rot_x"})
        EXPECT_THAT(run(one).output,
                    testing::ContainsRegex("^wind_rot_x .*\nunit +degrees\nacts only while  wind_force is not 0 and "
                                           "use_wind_image is off and wind_rot_z is not 0\n$"));
    EXPECT_EQ("Forces", nlohmann::json::parse(run("params gravity --json").output)["group"]);
    expect_mistake("params smoke gravty", "did you mean 'gravity'?");
}

}  // namespace
