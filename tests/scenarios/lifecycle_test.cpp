// An instance from its making to its end: what it asks of the host, and how it follows the names of its sources.
#include <gmock/gmock.h>

#include "render_host.h"
#include "stage/plugins/parameters.h"

namespace tovu {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Instance, AsksForItsHandlesAndLaysOutItsArrays) {
    RenderHost host;
    host.start_recording();
    const SmokeHandle smoke = host.add_smoke();
    EXPECT_THAT(host.calls(),
                ElementsAre(logged("_api__get_objectid_local", "", 2), logged("_api__get_objectid_local", "GEOM", 50),
                            logged("glTexCoordPointer", 2, GL_SHORT, 0)));
    const SmokeInstance& block = host.block(smoke);
    EXPECT_EQ(smoke.container, block.container_handle);
    EXPECT_EQ(smoke.geometry, block.geom_handle);
    EXPECT_EQ(10, block.array_warmup_frames);
    EXPECT_EQ(-1.0f, block.last_post_time);
    EXPECT_EQ(0, block.particle_count);
    EXPECT_EQ(255, block.color_table.rgb[0][0]) << "the colour table is built";
    EXPECT_EQ(1.0f, block.alpha_table.alpha[0]) << "the alpha table is built";
    host.start_recording();
    stage::remove_geometry(host.stage(), smoke.container);
    EXPECT_THAT(host.calls(), IsEmpty()) << "nobody is told of the end";
}

TEST(Instance, FirstFrameAsksInOrderAndASecondLookFindsNoTimePassed) {
    RenderHost host;
    const SmokeHandle smoke = host.add_smoke();
    const int32_t c = smoke.container;
    host.start_recording();
    host.run_frames(1);
    const int32_t camera = host.stage().camera_handle;
    EXPECT_THAT(
        host.calls(),
        ElementsAre("_api__pellor_get_is_post_recording()", "_api__pellor_get_retrace_counter()",
                    "_api__pellor_get_refreshrate()", logged("_api__container_get_absolute_position", c),
                    logged("_api__container_get_absolute_rotation", c),
                    logged("_api__container_get_absolute_scaling", c),
                    logged("_api__container_get_transformation_matrix", c),
                    logged("_api__get_cameraid", -1, "RENDERCAMERA", 62), logged("_api__get_camera_pan", camera),
                    logged("_api__get_camera_tilt", camera), logged("_api__get_camera_view_matrix", camera),
                    logged("_api__container_set_bounding_box", c, 0, 0, 0, 0, 0, 0),
                    logged("_api__set_geom_changed", smoke.geometry)));
    host.start_recording();
    stage::new_frame(host.stage());
    EXPECT_THAT(host.calls(), ElementsAre("_api__pellor_get_is_post_recording()", "_api__pellor_get_retrace_counter()",
                                          logged("_api__set_geom_changed", smoke.geometry)));
}

/// A smoke with all sources named, some frames old.
struct NamedSources {
    NamedSources() {
        stage::add_image(host.stage(), "sky", 1, 1, GL_RGBA, {9, 9, 9, 9});
        stage::add_image(host.stage(), "mask", 1, 1, GL_RGB, {9, 9, 9});
        host.add_outlines("cloud", {});
        smoke = host.add_smoke({{"spawn_cont_name", std::string("cloud")},
                                {"wind_image", std::string("sky")},
                                {"spawn_image", std::string("mask")}});
        host.run_frames(2);
    }
    /// Sets a name and returns the look-ups of the next frame.
    std::vector<std::string> look_ups_after(const char* parameter, const std::string& name, bool notify = false) {
        host.start_recording();
        stage::set_parameter(host.stage(), smoke.container, parameter, name, {.notify = notify});
        host.run_frames(1);
        std::vector<std::string> found;
        for (const std::string& call : host.calls())
            if (call.find("objectid") != std::string::npos) found.push_back(call);
        return found;
    }
    RenderHost host;
    SmokeHandle smoke;
};

TEST(SourceNames, ChangesArePickedUpWithoutNotice) {
    NamedSources s;
    const std::pair<const char*, std::string> rows[] = {
        {"#12", logged("_api__get_objectid_from_objectid", 12)},
        {"#-7x", logged("_api__get_objectid_from_objectid", -7)},
        {"#x", logged("_api__get_objectid_from_objectid", 0)},
        {"12#", logged("_api__get_objectid", "12#", "", 2)},
        {"no such", logged("_api__get_objectid", "no such", "", 2)},
    };
    for (const auto& [name, call] : rows) {
        EXPECT_THAT(s.look_ups_after("spawn_cont_name", name), ElementsAre(call));
        EXPECT_THAT(s.look_ups_after("spawn_cont_name", name), IsEmpty()) << "once is enough";
    }
    EXPECT_THAT(s.look_ups_after("wind_image", "mask"), ElementsAre(logged("_api__get_image_objectid", "mask")));
    EXPECT_THAT(s.look_ups_after("spawn_image", "sky"), ElementsAre(logged("_api__get_image_objectid", "sky")));
    EXPECT_EQ(3, s.host.block(s.smoke).wind_source.bytes_per_pixel);
    EXPECT_EQ(4, s.host.block(s.smoke).spawn_image_source.bytes_per_pixel);
}

TEST(SourceNames, ClearedContainersGoAndImagesStay) {
    NamedSources s;
    const SmokeInstance& block = s.host.block(s.smoke);
    const int32_t cloud = block.container_source.container;
    const int32_t sky = block.wind_source.image;
    for (const char* name : {"spawn_cont_name", "wind_image", "spawn_image"})
        EXPECT_THAT(s.look_ups_after(name, ""), IsEmpty());
    EXPECT_EQ(-1, block.container_source.container);
    EXPECT_EQ(sky, block.wind_source.image);
    EXPECT_STREQ("cloud", block.saved_container_name);
    EXPECT_THAT(s.look_ups_after("spawn_cont_name", "cloud"), IsEmpty()) << "as saved: nothing seems changed";
    EXPECT_EQ(-1, block.container_source.container);
    s.look_ups_after("spawn_cont_name", "");
    EXPECT_THAT(s.look_ups_after("spawn_cont_name", "cloud", true),
                ElementsAre(logged("_api__get_objectid", "cloud", "", 2)));
    EXPECT_EQ(cloud, block.container_source.container);
}

TEST(SourceNames, The999FirstCharactersCount) {
    NamedSources s;
    for (const char* parameter : {"spawn_cont_name", "wind_image", "spawn_image"}) {
        SCOPED_TRACE(parameter);
        const std::string same(998, 'n');
        EXPECT_EQ(1u, s.look_ups_after(parameter, same + "a").size());
        EXPECT_EQ(1u, s.look_ups_after(parameter, same + "b").size()) << "the 999th differs";
        EXPECT_EQ(0u, s.look_ups_after(parameter, same + "b and more").size()) << "the 1000th is beyond";
    }
    EXPECT_THAT(s.host.complaints(), IsEmpty());
}

TEST(Changes, AreDispatchedByIndex) {
    NamedSources s;
    SmokeInstance& block = s.host.block(s.smoke);
    const auto image_calls = [](const char* name, int32_t image) {
        return std::vector<std::string>{logged("_api__get_image_objectid", name), logged("_api__get_image_size", image),
                                        logged("_api__get_image_format", image)};
    };
    for (int32_t index = -2; index < 63; ++index) {
        SCOPED_TRACE(index);
        block.color_table.rgb[0][0] = 7;
        block.alpha_table.alpha[0] = 7;
        block.spawn_image_source.inversion_flag = 7;
        s.host.start_recording();
        stage::notify_changed(s.host.stage(), s.smoke.container, index);
        std::vector<std::string> expected;
        if (index == 46) expected = {logged("_api__get_objectid", "cloud", "", 2)};
        if (index == 54) expected = image_calls("sky", block.wind_source.image);
        if (index == 58 || index == 59) expected = image_calls("mask", block.spawn_image_source.image);
        EXPECT_EQ(expected, s.host.calls());
        EXPECT_EQ(index == 13, block.color_table.rgb[0][0] == 255);
        EXPECT_EQ(index == 12, block.alpha_table.alpha[0] == 1.0f);
        EXPECT_EQ(index == 58 || index == 59 ? 0 : 7, block.spawn_image_source.inversion_flag);
    }
    s.host.set(s.smoke, "spawn_image_bool", false);
    EXPECT_EQ(1, block.spawn_image_source.inversion_flag);
}

struct RectCase {
    const char* name;
    double wind_x, wind_y;
    float x, y;  // the rectangle's greater corner; the lesser is its negative
};

TEST(ImageRectangles, WindFallsBackToTheSpawnRange) {
    const RectCase rows[] = {{"its own", 200, 100, 100, 50},
                             {"y too small", 200, 0.0005, 5, 10},
                             {"x too small", 0, 100, 5, 10},
                             {"just enough", 0.001, 0.001, 0.0005f, 0.0005f}};
    RenderHost host;
    const SmokeHandle smoke = host.add_smoke({{"spawn_range_x", 10.0}, {"spawn_range_y", 20.0}});
    const SmokeInstance& block = host.block(smoke);
    host.run_frames(1);
    EXPECT_EQ(0.0f, block.wind_source.rect_max_x) << "only while it is used";
    EXPECT_EQ(0.0f, block.spawn_image_source.rect_max_x) << "only while it is used";
    host.set(smoke, "use_wind_image", true);
    host.set(smoke, "spawn_type", std::string("Image"));
    for (const RectCase& row : rows) {
        SCOPED_TRACE(row.name);
        host.set(smoke, "wind_image_range_x", row.wind_x);
        host.set(smoke, "wind_image_range_y", row.wind_y);
        host.run_frames(1);
        const ImageSource& wind = block.wind_source;
        EXPECT_THAT((std::vector<float>{wind.rect_min_x, wind.rect_min_y, wind.rect_max_x, wind.rect_max_y}),
                    ElementsAre(-row.x, -row.y, row.x, row.y));
    }
    const ImageSource& mask = block.spawn_image_source;
    host.set(smoke, "spawn_range_y", 8.0);
    stage::new_frame(host.stage());  // no time has passed, but the rest of a frame's work is done all the same
    EXPECT_THAT((std::vector<float>{mask.rect_min_x, mask.rect_min_y, mask.rect_max_x, mask.rect_max_y}),
                ElementsAre(-5, -4, 5, 4));
}

TEST(Buttons, BuildAlphaWritesThePairs) {
    RenderHost host;
    const SmokeHandle smoke = host.add_smoke();
    host.press(smoke, "build_alpha");
    const auto text = std::get<std::string>(host.get(smoke, "return_value"));
    EXPECT_EQ(1867u, text.size());
    EXPECT_TRUE(text.starts_with("0.000000 1.000000 0.009766 0.985371 ")) << text.substr(0, 60);
    EXPECT_TRUE(text.ends_with(" 1.0 0.000000 ")) << text.substr(1840);
    for (const int32_t action : {0, 3, -1}) stage::execute_action(host.stage(), smoke.container, action);
    EXPECT_EQ(text, std::get<std::string>(host.get(smoke, "return_value"))) << "unknown actions do nothing";
    EXPECT_THAT(host.complaints(), IsEmpty());
}

}  // namespace
}  // namespace tovu
