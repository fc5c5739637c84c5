// An instance from creation to clean-up: its calls to the host, and how it follows the names of its sources.
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
    EXPECT_EQ(255, block.color_table.rgb[0][0]) << "the colour table is built";
    EXPECT_EQ(1.0f, block.alpha_table.alpha[0]) << "the alpha table is built";
    host.start_recording();
    stage::remove_geometry(host.stage(), smoke.container);
    EXPECT_THAT(host.calls(), IsEmpty()) << "clean-up calls nothing";
}

TEST(Instance, CallsOfTheFirstFrameAndOfARepeatedOne) {
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

/// A smoke with all sources named, after two frames.
struct NamedSources {
    NamedSources() {
        stage::add_image(host.stage(), "sky", 1, 1, GL_RGBA, {9, 9, 9, 9});
        stage::add_image(host.stage(), "mask", 1, 1, GL_RGB, {9, 9, 9});
        host.add_outlines("cloud", {});
        smoke = host.add_smoke({{"spawn_cont_name", "cloud"}, {"wind_image", "sky"}, {"spawn_image", "mask"}});
        host.run_frames(2);
    }
    /// Sets a name and returns the look-ups of the next frame.
    std::vector<std::string> look_ups_after(const char* parameter, const std::string& name, bool notify = false) {
        host.start_recording();
        stage::set_parameter(host.stage(), smoke.container, parameter, name, {.notify = notify});
        host.run_frames(1);
        std::vector<std::string> found = host.calls();
        std::erase_if(found, [](const std::string& call) { return call.find("objectid") == std::string::npos; });
        return found;
    }
    RenderHost host;
    SmokeHandle smoke;
    SmokeInstance& block() { return host.block(smoke); }
};

TEST(SourceNames, AreReadAgainWithoutAChangeCallback) {
    NamedSources s;
    const struct {
        const char* parameter;
        const char* name;
        std::string call;
    } rows[] = {{"spawn_cont_name", "#12", logged("_api__get_objectid_from_objectid", 12)},
                {"spawn_cont_name", "#-7x", logged("_api__get_objectid_from_objectid", -7)},
                {"spawn_cont_name", "#99999999999", logged("_api__get_objectid_from_objectid", 2147483647)},
                {"spawn_cont_name", "#x", logged("_api__get_objectid_from_objectid", 0)},
                {"spawn_cont_name", "12#", logged("_api__get_objectid", "12#", "", 2)},
                {"spawn_cont_name", "no such", logged("_api__get_objectid", "no such", "", 2)},
                {"wind_image", "mask", logged("_api__get_image_objectid", "mask")},
                {"spawn_image", "sky", logged("_api__get_image_objectid", "sky")}};
    for (const auto& row : rows) {
        EXPECT_THAT(s.look_ups_after(row.parameter, row.name), ElementsAre(row.call));
        EXPECT_THAT(s.look_ups_after(row.parameter, row.name), IsEmpty()) << row.name << ": looked up once";
    }
    EXPECT_EQ(3, s.block().wind_source.bytes_per_pixel);
    EXPECT_EQ(4, s.block().spawn_image_source.bytes_per_pixel);
}

TEST(SourceNames, ClearingRemovesContainersButNotImages) {
    NamedSources s;
    const int32_t cloud = s.block().container_source.container;
    const int32_t sky = s.block().wind_source.image;
    for (const char* name : {"spawn_cont_name", "wind_image", "spawn_image"})
        EXPECT_THAT(s.look_ups_after(name, ""), IsEmpty());
    EXPECT_EQ(-1, s.block().container_source.container);
    EXPECT_EQ(sky, s.block().wind_source.image);
    EXPECT_STREQ("cloud", s.block().saved_container_name);
    EXPECT_THAT(s.look_ups_after("spawn_cont_name", "cloud"), IsEmpty()) << "the saved name is the same";
    EXPECT_EQ(-1, s.block().container_source.container);
    s.look_ups_after("spawn_cont_name", "");
    s.look_ups_after("spawn_cont_name", "cloud", true);
    EXPECT_EQ(cloud, s.block().container_source.container);
}

TEST(SourceNames, TheFirst999CharactersCount) {
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
    SmokeInstance& block = s.block();
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

TEST(ImageRectangles, WindFallsBackToTheSpawnRange) {
    const struct {
        const char* name;
        double wind_x, wind_y;
        float x, y;  // the rectangle's greater corner; the lesser is its negative
    } rows[] = {{"its own", 200, 100, 100, 50},
                {"y too small", 200, 0.0005, 5, 10},
                {"x too small", 0, 100, 5, 10},
                {"just enough", 0.001, 0.001, 0.0005f, 0.0005f}};
    RenderHost host;
    const SmokeHandle smoke = host.add_smoke({{"spawn_range_x", 10.0}, {"spawn_range_y", 20.0}});
    const ImageSource& wind = host.block(smoke).wind_source;
    const ImageSource& mask = host.block(smoke).spawn_image_source;
    const auto rect_of = [](const ImageSource& s) {
        return std::vector<float>{s.rect_min_x, s.rect_min_y, s.rect_max_x, s.rect_max_y};
    };
    host.run_frames(1);
    EXPECT_EQ(0.0f, wind.rect_max_x + mask.rect_max_x) << "only while they are used";
    host.set(smoke, "use_wind_image", true);
    host.set(smoke, "spawn_type", "Image");
    for (const auto& row : rows) {
        host.set(smoke, "wind_image_range_x", row.wind_x);
        host.set(smoke, "wind_image_range_y", row.wind_y);
        host.run_frames(1);
        EXPECT_THAT(rect_of(wind), ElementsAre(-row.x, -row.y, row.x, row.y)) << row.name;
    }
    host.set(smoke, "spawn_range_y", 8.0);
    stage::new_frame(host.stage());  // a repeated frame still places the rectangles
    EXPECT_THAT(rect_of(mask), ElementsAre(-5, -4, 5, 4));
}

TEST(Buttons, BuildAlphaWritesThePairs) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(3);
    host.press(smoke, "build_alpha");
    const auto text = std::get<std::string>(host.get(smoke, "return_value"));
    EXPECT_EQ(1867u, text.size());
    EXPECT_TRUE(text.starts_with("0.000000 1.000000 0.009766 0.985371 ")) << text.substr(0, 60);
    EXPECT_TRUE(text.ends_with(" 1.0 0.000000 ")) << text.substr(1840);
    for (const int32_t action : {0, 3, -1}) stage::execute_action(host.stage(), smoke.container, action);
    EXPECT_EQ(text, std::get<std::string>(host.get(smoke, "return_value"))) << "unknown actions do nothing";
    EXPECT_EQ(3, host.active_count(smoke));
}

}  // namespace
}  // namespace tovu
