// lint of small scenes whose comments state the expected lines, and of all shipped scenes and looks.
#include <cstdlib>
#include <filesystem>

#include "../stage/temporary_folder.h"
#include "annotated_scene.h"
#include "stage/lint/lint.h"
#include "stage/output/png_file.h"
#include "stage/scenefile/scene_reader.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> lint(const stage::Result<stage::SceneDescription>& scene) {
    if (!scene) return {scene.error().message};
    const auto built = stage::build_scene(*scene, TOVU_SMOKE_PLUGIN);
    if (!built) return {built.error().message};
    std::vector<std::string> lines = built->warnings;
    for (std::string& line : stage::lint_scene(*built)) lines.push_back(std::move(line));
    return lines;
}

void expect_annotated(const std::string& scene) {
    EXPECT_THAT(lint(stage::read_scene(scene, "s.toml")),
                testing::UnorderedElementsAreArray(annotated_messages(scene, "s.toml")));
}

TEST(Lint, Births) {
    expect_annotated(R"(
container = [
    { name = "a", parameters = { birth_rate = 200 } },  #! 14: births of 'a' are lost: up to 600 … number_of_particles = 600 or birth_rate = 33.3
    { name = "b", parameters = { birth_rate = 20000, number_of_particles = 110 } },  #! 76: births … set birth_rate = 36.7
    { name = "c", parameters = { birth_rate = 34, life_time_spread = 50 } },
    { name = "d", parameters = { birth_rate = 100, life_time = 1000, number_of_particles = 510 } },
    { name = "e", parameters = { birth_rate = 0, number_of_particles = 200 } },
    { name = "f", parameters = { birth_rate = 0 } },
    { name = "g", parameters = { birth_rate = 0.4, number_of_particles = 2000 } },
    { name = "h", parameters = { birth_rate = 200, freeze_motion = true } },
    { name = "j", parameters = { birth_rate = 0 } },
    { name = "m", pulses = true, parameters = { birth_rate = 20000 } },
    { name = "k", parameters = { number_of_particles = 200 } },
    { name = "l", parameters = { number_of_particles = 2000 } },
    { name = "n", texture = ["puff", "soft", "wisp"], parameters = { birth_rate = 60 } },  #! 14: births of 'n' … 60 x life_time 3), number_of_particles is 100; set number_of_particles = 180 or birth_rate = 33.3
    { name = "o", parameters = { birth_rate = 60, life_time = 9 } },
    { name = "p", parameters = { birth_rate = 60 } },  #! 14: births of 'p' are lost: up to 180
    { name = "i", parameters = { birth_rate = 2000, number_of_particles = 0 } },  #! 75: births … 2000 x life_time 3), number_of_particles is 0
]
at = [
    { time = 1, container = "e", parameters = { birth_rate = 30 } },  #! 62: birth_rate = 30 after 1 s with 0 … 30 come in one frame; to begin evenly, set birth_rate = 1.01 at 0.98 s
    { time = 0.98, container = "f", parameters = { birth_rate = 1.0101 } },
    { time = 1, container = "f", parameters = { birth_rate = 30 } },
    { time = 1, container = "j", parameters = { birth_rate = 30 }, burst = 5 },
    { time = 1.5, container = "o", parameters = { freeze_motion = true } },
    { time = 4, container = "p", parameters = { freeze_motion = true } },
    { time = 2, container = "g", parameters = { birth_rate = 300 } },  #! 62: birth_rate = 300 after 2 s with 0.4
]
[[track]]
container = "k"
parameter = "birth_rate"
keys = [{ time = 0, value = 0 }, { time = 2, value = 0 }, { time = 2.1, value = 60 }]  #! 81: birth_rate = 12 after 2.02 s with 0 … 24 come in one frame
[[track]]
container = "l"
parameter = "birth_rate"
keys = [{ time = 0, value = 100 }, { time = 1, value = 300 }, { time = 4, value = 0 }]
)");
}

// A square with a square inside.
const char* const kNested =
    "o a\nv 0 0 0\nv 9 0 0\nv 9 9 0\nv 0 9 0\nf 1 2 3 4\no b\nv 3 3 0\nv 6 3 0\nv 6 6 0\nv 3 6 0\nf 5 6 7 8\n";

TEST(Lint, Sources) {
    const TemporaryFolder folder;
    write_bytes(folder / "nested.obj", kNested);
    const std::string text = R"(
images = { sides = "sides.png", black = "black.png", inside = "inside.png" }
container = [
    { name = "thin", geometry = { kind = "rectangle", width = 5, height = 0.005 } },
    { name = "nested", geometry = { kind = "mesh", file = "nested.obj" } },
    { name = "letters", geometry = { kind = "text", text = "BO8%i" } },
    { name = "turned", rotation = [90, 0, 0], geometry = { kind = "ellipse", width = 5, height = 5 } },
    { name = "bare" },
    { name = "a", parameters = { spawn_type = "Container", spawn_cont_name = "thin" } },  #! 78: the container 'thin': in the plane XY the shape is 5 x 0.005 units
    { name = "b", parameters = { spawn_type = "Container", spawn_cont_name = "nested" } },  #! 78: the container 'nested': outline 2 of 2 lies inside outline 1
    { name = "c", parameters = { spawn_type = "Container", spawn_cont_name = "letters" } },
    { name = "d", parameters = { spawn_type = "Container", spawn_cont_name = "turned" } },  #! 78: the container 'turned': in the plane XY the shape is 5 x 0 units
    { name = "e", parameters = { spawn_type = "Container", spawn_cont_name = "turned", spawn_cont_ref_plane = "XZ" } },
    { name = "f", parameters = { spawn_type = "Container", spawn_cont_name = "turned", spawn_cont_coord = "Local" } },
    { name = "g", parameters = { spawn_type = "Container", spawn_cont_name = "bare" } },  #! 78: the container 'bare' has no shape
    { name = "h", parameters = { spawn_type = "Image", spawn_image = "sides", spawn_range_x = 200, spawn_range_y = 100 } },  #! 70: the mask 'sides' is lit in 1 of 2 pixels of its last column … up to 200 units to the right #! 70: the mask 'sides' is lit in 1 of 3 pixels of its top row … up to 100 units above
    { name = "i", parameters = { spawn_type = "Image", spawn_image = "black", spawn_range_x = 20, spawn_range_y = 10 } },  #! 70: the mask 'black' is black
    { name = "j", parameters = { spawn_type = "Image", spawn_image = "sides", spawn_range_x = 200 } },  #! 70: the mask 'sides' covers 200 x 0 units
    { name = "k", parameters = { spawn_type = "Image", spawn_image = "inside", spawn_range_x = 20, spawn_range_y = 10, spawn_range_z = 5 } },  #! 136: spawn_range_z = 5 counts double … from 0 to 10; set 2.5 for 5
    { name = "l", parameters = { use_wind_image = true, wind_force = 5, wind_image = "inside" } },  #! 86: the image 'inside' covers 0 x 0 units: all particles read one pixel; set wind_image_range_x and wind_image_range_y
    { name = "m", parameters = { use_wind_image = true, wind_force = 5, wind_image = "inside", spawn_range_x = 9, spawn_range_y = 9 } },
    { name = "n", parameters = { spawn_type = "Sphere", spawn_range_z = 5 } },
]
)";
    const auto write_mask = [&](const char* name, std::vector<uint8_t> pixels) {
        ASSERT_TRUE(stage::write_png(folder / name, {3, 2, stage::kPictureLuminance, std::move(pixels)}));
    };
    write_mask("sides.png", {255, 255, 0, 0, 0, 1});
    write_mask("black.png", {0, 0, 0, 0, 0, 0});
    write_mask("inside.png", {255, 255, 0, 0, 0, 0});
    const fs::path file = folder / "s.toml";
    EXPECT_THAT(lint(stage::read_scene(text, file)),
                testing::UnorderedElementsAreArray(annotated_messages(text, file.string())));
}

TEST(Lint, Values) {
    expect_annotated(R"(
container = [
    { name = "a", parameters = { wind_rot_z = 40 } },  #! 47: wind_rot_z does nothing here: it acts only while wind_force is not 0 and use_wind_image is off
    { name = "b", parameters = { wind_rot_z = 40 } },
    { name = "c", parameters = { spawn_offset = 50 } },  #! 49: spawn_offset does nothing here … spawn_type is Sphere
    { name = "d", parameters = { spawn_offset = 100, life_time_scale = 100 } },
    { name = "e", parameters = { life_time_scale = 50 } },  #! 52: life_time_scale does nothing … Container or Image; or another plug-in
    { name = "f", parameters = { life_time_scale = 50 } },
    { name = "g", parameters = { spawn_image_bool = false } },  #! 53: spawn_image_bool does nothing here: nothing reads it
    { name = "h", parameters = { size_lock = true, size_birth_x = 9 } },  #! 46: size_lock binds nothing here: size_birth_x is 9 and size_birth_y is 5
    { name = "i", parameters = { size_lock = false, size_birth_x = 9 } },
    { name = "j", parameters = { opening_angle_lock = true } },
    { name = "k", scale = [2, 2, 1], parameters = { reference = "World" } },  #! 65: reference = "World" in 'k', whose scale is 2 x 2 x 1
    { name = "l", scale = [2, 2, 1], parameters = { gravity = 1 } },
    { name = "m", parameters = { color = "0.2 1 1 1 1 0 0 0" } },  #! 42: color begins at 0.2: from 0 to there particles are black
    { name = "n", parameters = { color = "0 1 1 1 0.5 0 0 0" } },  #! 42: color ends at 0.5: from there to 1 particles are black
    { name = "o", parameters = { color = "0 1 1 1 1 0 0 0 1 1 0 0" } },  #! 42: color has a step at its end 1
    { name = "p", parameters = { alpha_curve = "0.1 0 0.9 1" } },  #! 48: alpha_curve begins at 0.1 #! 48: alpha_curve ends at 0.9
    { name = "q", parameters = { alpha_curve = "0 1 1 0 0.5 0" } },  #! 48: parameter 'alpha_curve' … position 0.5 does not come after
    { name = "r", parameters = { use_wind_image = true, wind_force = 3 } },  #! 51: use_wind_image = true has no effect while 'wind_image' is empty
    { name = "s", parameters = { size_lock = true } },  #! 46: size_lock binds nothing here: size_birth_x is 9 and size_birth_y is 5
    { name = "gather", plugin = "TovuGather", parameters = { smoke_container = "f" } },
]
at = [
    { time = 1, container = "b", parameters = { wind_force = 30 } },
]
track = [
    { container = "s", parameter = "size_birth_x", keys = [{ time = 0, value = 5 }, { time = 1, value = 9 }] },
]
)");
}

TEST(Lint, Drawing) {
    const std::string faint = R"(
container = [
    { name = "a", parameters = { alpha_curve = "0 0 0.5 0.1 1 0" } },  #! 48: the layers of 'a' have an opacity of 0.05 on average, 13 of 255 steps
    { name = "b", opacity = 0.1, parameters = { gravity = 1 } },  #! 14: the layers of 'b' have an opacity of 0.05 on average
    { name = "c", parameters = { gravity = 1 } },
]
)";
    expect_annotated("bits = 8" + faint);
    EXPECT_THAT(lint(stage::read_scene("bits = 16" + faint, "s.toml")), testing::IsEmpty());
    expect_annotated(R"(
container = [
    { name = "a", parameters = { size_death_x = 900, size_death_y = 900 } },
    { name = "b", parameters = { freeze_motion = true, size_death_x = 900, size_death_y = 900 } },
]
)");
    expect_annotated(R"(
container = [
    { name = "a", parameters = { size_death_x = 900, size_death_y = 900 } },  #! 14: the scene draws about 116 megapixels … 'a' draws 83 of them, 90 quads of 921600 pixels
    { name = "b", texture = ["puff", "soft"], parameters = { number_of_particles = 40, birth_rate = 12, size_death_x = 900, size_death_y = 900 } },
]
)");
}

TEST(Lint, FindsNothingInShippedFiles) {
    for (const char* folder : {"scenes", "docs/parameters/scenes", "looks"}) {
        for (const auto& entry : fs::directory_iterator(fs::path(TOVU_SOURCE_DIR) / folder)) {
            const fs::path& file = entry.path();
            if (file.extension() != ".toml" || file.stem() == "images") continue;
            EXPECT_EQ(0, std::system((TOVU_PROGRAM " lint '" + file.string() + "'").c_str())) << file;
        }
    }
}

}  // namespace
