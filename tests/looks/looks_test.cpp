// The built-in images, and the wind images that `./tovu bake` makes.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>

#include "../../support/test_host.h"
#include "../stage/temporary_folder.h"
#include "stage/assets/picture_file.h"
#include "stage/scenefile/built_in_images.h"
#include "stage/scenefile/scene_build.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {
namespace {

TEST(BuiltInImages, EachCanBeShownByItsName) {
    const auto& images = stage::built_in_images();
    ASSERT_TRUE(images) << images.error().message;
    EXPECT_LT(20u, images->size());
    std::string text;
    for (const auto& [name, image] : *images)
        text.append("[[container]]\nname = '")
            .append(name)
            .append("'\ngeometry = { kind = 'plate', image = '")
            .append(name)
            .append("', width = 1, height = 1 }\n");
    const auto scene = stage::read_scene(text, "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    const auto built = stage::build_scene(*scene, "");
    ASSERT_TRUE(built) << built.error().message;
    for (const auto& [name, image] : *images)
        EXPECT_NE(stage::kNoObject, stage::find_image_by_name(*built->stage, name)) << name;
}

TEST(BuiltInImages, ASceneSetsHowASequenceIsPlayed) {
    const auto scene = stage::read_scene(
        "images = { mine = { file = 'rise', frame_rate = 2 }, wisp_a = 'glow' }\n"
        "container = [{ name = 'a', texture = 'wisp_a' }, { name = 'b', texture = 'wisp_b' }]",
        "scene.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    EXPECT_EQ(32u, scene->images.at("mine").files.size());
    EXPECT_EQ(2.0, scene->images.at("mine").frame_rate);
    const auto built = stage::build_scene(*scene, "");
    ASSERT_TRUE(built) << built.error().message;
    const auto& shown = built->description.images;
    EXPECT_EQ(1u, shown.at("wisp_a").files.size()) << "the scene's own image of that name";
    EXPECT_EQ(12.0, shown.at("wisp_b").frame_rate) << "its own rate";
}

/// Runs `tovu bake`, with its output in the folder's file "printed". Returns the exit status.
int bake(const TemporaryFolder& folder, const std::string& arguments) {
    const std::string command = "cd '" + (folder / "").string() +
                                "' && /usr/bin/python3 -B '" TOVU_SOURCE_DIR "/looks/make/bake.py' " + arguments +
                                " >printed 2>&1";
    return WEXITSTATUS(std::system(command.c_str()));
}

/// The first picture that `tovu bake` writes for these arguments.
stage::Picture baked(const TemporaryFolder& folder, const std::string& arguments) {
    EXPECT_EQ(0, bake(folder, arguments + " --range 100 -o %d.png")) << arguments;
    auto picture = stage::read_picture(folder / "0.png");
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? *picture : stage::Picture{};
}

/// The wind_force that bake has printed.
double printed_force(const TemporaryFolder& folder) {
    const std::string printed = file_bytes(folder / "printed"), key = "wind_force = ";
    return std::stod(printed.substr(printed.find(key) + key.size()));
}

/// Moves one particle at rest in the wind of a picture over (-50, -50) to (50, 50), for a second at each place.
struct Weather {
    Weather(stage::Picture picture, double force) {
        stage::add_image(host.stage(), "wind", picture.width, picture.height, picture.format, std::move(picture.bytes));
        smoke = host.add_smoke({{"number_of_particles", 1},
                                {"birth_rate", 1e6},
                                {"life_time", 1e6},
                                {"initial_speed", 0.0},
                                {"use_wind_image", true},
                                {"wind_image", "wind"},
                                {"wind_force", force},
                                {"wind_image_range_x", 100.0},
                                {"wind_image_range_y", 100.0}});
        host.run_frames(2);
    }
    Vector3 at(float x, float y) {
        Particle& p = *host.active(smoke).at(0);
        p.position = {x, y, 0};
        host.run_frames(1);
        return p.position - Vector3{x, y, 0};
    }
    TestHost host{1, 1.0};
    SmokeHandle smoke;
};

TEST(Bake, TheSmokeReadsTheRequestedWind) {
    // A Gaussian vortex: at the distance r the speed is strength · r / scale · exp((1 - (r / scale)²) / 2).
    const TemporaryFolder folder;
    const stage::Picture picture = baked(folder, "vortex --strength 12 --scale 20 --drift 30,0 --size 100");
    Weather weather(picture, printed_force(folder));
    for (const auto& [x, y] : {std::pair{20.5f, 0.5f}, {0.5f, 20.5f}, {-20.5f, 5.5f}, {9.5f, -3.5f}, {0.5f, 0.5f}}) {
        const double turn = 12.0 / 20 * std::exp((1 - (x * x + y * y) / 400) / 2);
        const Vector3 wind = weather.at(x, y);
        EXPECT_NEAR(30 - turn * y, wind.x, 0.5) << x << ", " << y;
        EXPECT_NEAR(turn * x, wind.y, 0.5) << x << ", " << y;
        EXPECT_EQ(0, wind.z);
    }
}

/// The net outflow of boxes of `side` pixels, as a share of the total flow through their borders.
double outflow_share(const stage::Picture& picture, int side) {
    const auto wind = [&](int column, int row) {
        const int first_byte = (row * picture.width + column) * 3;
        const uint8_t* pixel = &picture.bytes[static_cast<size_t>(first_byte)];
        const double turns = pixel[2] / 255.0 * 2 * M_PI;
        return std::array{pixel[0] * std::cos(turns), pixel[0] * std::sin(turns)};
    };
    double out = 0, through = 0;
    for (int row = 0; row + side < picture.height; row += side)
        for (int column = 0; column + side < picture.width; column += side) {
            double net = 0;
            for (int i = 0; i < side; ++i) {
                const double borders[] = {-wind(column, row + i)[0], wind(column + side, row + i)[0],
                                          -wind(column + i, row)[1], wind(column + i, row + side)[1]};
                for (const double flow : borders) {
                    net += flow;
                    through += std::abs(flow);
                }
            }
            out += std::abs(net);
        }
    return out / through;
}

TEST(Bake, AMistakeNamesTheOptionAndWhatIsRight) {
    const std::pair<const char*, const char*> rows[] = {
        {"shear -o w%d.png --size 12", "--size: must be a whole number from 16 to 1024, not '12'"},
        {"eddies -o w%d.png --drift 3", "--drift: must be two numbers such as 0,22, not '3'"},
        {"eddies -o w.png", "-o: the loop has 32 pictures: put a number such as %03d into the name"},
        {"vortex -o w%%d.png", "-o: must be a name such as wind%03d.png"},
        {"flow printed -o w.png", "picture: must be a picture, not 'printed'"},
        {"title ' ' -o t", "text: ' ' must have letters that can be seen"},
    };
    for (const auto& [arguments, message] : rows) {
        const TemporaryFolder folder;
        EXPECT_EQ(2, bake(folder, arguments)) << arguments;
        EXPECT_THAT(file_bytes(folder / "printed"), testing::HasSubstr(message));
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder / ""), {})) << "only what is printed";
    }
}

TEST(Bake, ATitleIsAWholeScene) {
    const TemporaryFolder folder;
    ASSERT_EQ(0, bake(folder, "title 'Ü \"1\"' -o t --length 0.4")) << file_bytes(folder / "printed");
    const auto scene = stage::load_scene_file(folder / "t/title.toml");
    ASSERT_TRUE(scene) << scene.error().message;
    EXPECT_EQ(10u, scene->images.at("edge").files.size());
    const auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(built) << built.error().message;
    EXPECT_TRUE(built->warnings.empty());
}

TEST(Bake, WindsHaveNoSourcesAndSinks) {
    for (const char* arguments : {"eddies --drift 0,22", "eddies --scale 30 --seed 5", "vortex --count 5 --drift 9,1",
                                  "shear --drift 10,0", "shear --drift 0,-10"}) {
        const TemporaryFolder folder;
        EXPECT_GT(0.05, outflow_share(baked(folder, std::string(arguments) + " --size 64"), 8)) << arguments;
    }
}

}  // namespace
}  // namespace tovu
