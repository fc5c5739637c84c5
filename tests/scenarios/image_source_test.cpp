// Images as masks and as wind: the pixel at a position, and images that change between two steps.
#include <gmock/gmock.h>
#include <tovu/spawn_requests.h>

#include <cmath>

#include "render_host.h"

namespace tovu {
namespace {

/// One particle at rest in the wind of the image "wind" over (−50, −50) to (50, 50), in frames of 0.25 s.
struct Weather {
    Weather(int32_t width, int32_t height, int32_t format, std::vector<uint8_t> pixels,
            const stage::ParameterValues& values = {}) {
        host.stage().clock.frame_period_seconds = 0.25;
        image = *stage::add_image(host.stage(), "wind", width, height, format, std::move(pixels));
        smoke = host.smoke_of(1, with({{"use_wind_image", true},
                                       {"wind_image", "wind"},
                                       {"wind_force", 1020.0},
                                       {"wind_rot_z", 33.0},
                                       {"wind_image_range_x", 100.0},
                                       {"wind_image_range_y", 100.0},
                                       {"spawn_image", "wind"}},
                                      values));
    }
    /// Displacement by the wind of a particle at (x, y), in pixel values: 1020 · 0.25 s is 255.
    Vector3 wind_at(float x, float y) {
        Particle& p = *host.active(smoke).at(0);
        p.position = {x, y, 0};
        host.run_frames(1);
        return p.position - Vector3{x, y, 0};
    }
    /// Live particles after births on the image, with room for `count`.
    int born_on_it(int count) {
        host.set(smoke, "spawn_range_x", 100.0);
        host.set(smoke, "spawn_range_y", 100.0);
        host.set(smoke, "spawn_type", 3);
        host.set(smoke, "number_of_particles", count);
        host.set(smoke, "birth_rate", 4.4 * count);  // enough for one frame; more would search a dark image for long
        host.run_frames(1);
        EXPECT_GE(1, host.active_count(smoke)) << "the mask has its rectangle from the next frame on";
        host.run_frames(2);
        return host.active_count(smoke);
    }
    RenderHost host;
    int32_t image = -1;
    SmokeHandle smoke;
};

TEST(ImageSource, ReadsThePixelUnderThePosition) {
    const std::vector<uint8_t> pixels = {7, 0, 0, 17, 0, 0, 107, 0, 0, 117, 0, 0};  // 10 · column + 100 · row + 7
    const Vector3 rows[] = {{-50, -50, 7},   {0, 0, 117},         {49.9f, -10, 17}, {1000, 1000, 117},
                            {-1000, 0, 107}, {-0.01f, -0.01f, 7}, {-0.01f, 0, 107}, {-50, 1000, 107}};
    Weather weather(2, 2, GL_RGB, pixels);
    for (const auto [x, y, value] : rows) EXPECT_NEAR(value, weather.wind_at(x, y).x, 1e-3f) << x << ", " << y;
    for (const float far : {1e30f, -1e30f, std::nanf("")})
        EXPECT_EQ(0, pixel_index(far, -50, 50, 2)) << "beyond the range of an index: " << far;
    weather.host.set(weather.smoke, "wind_image_range_x", 0.0);  // both ranges from spawn, which is 0: no extent
    EXPECT_NEAR(117, weather.wind_at(40, 40).x, 1e-3f) << "a changed range counts from the next frame on";
    EXPECT_NEAR(7, weather.wind_at(40, 40).x, 1e-3f);
}

TEST(ImageSource, SecondAndThirdChannelTurnTheWind) {
    const struct {
        const char* name;
        std::vector<uint8_t> pixel;
        double angle_x, angle_z;  // in 255ths of a turn
        double strength;          // in pixel values
    } rows[] = {{"full, about x alone", {255, 64, 0}, 64, 0, 255},
                {"full, about z", {255, 0, 64}, 0, 64, 255},
                {"half, about both", {128, 32, 200}, 32, 200, 128},
                {"none", {0, 99, 99}, 0, 0, 0}};
    for (const auto& row : rows)
        for (const int reference : {0, 1}) {
            SCOPED_TRACE(testing::Message() << row.name << ", reference " << reference);
            Weather weather(1, 1, GL_RGB, row.pixel, {{"reference", reference}});
            weather.host.container(weather.smoke).placement.scale = {2, 3, 4};
            const double x = row.angle_x / 255 * 2 * M_PI;
            const double z = row.angle_z / 255 * 2 * M_PI;
            const Vector3 direction{static_cast<float>(std::cos(z)), static_cast<float>(std::sin(z) * std::cos(x)),
                                    static_cast<float>(std::sin(z) * std::sin(x))};
            const Vector3 scale = reference == 1 ? Vector3{2, 3, 4} : Vector3{1, 1, 1};
            expect_near(scaled(direction, scale * static_cast<float>(row.strength)), weather.wind_at(0, 0), 1e-3);
        }
}

TEST(ImageSource, FormatsDecideTheBytesOfAPixel) {
    const std::pair<int32_t, size_t> rows[] = {{GL_ALPHA, 1}, {GL_LUMINANCE, 1}, {GL_LUMINANCE_ALPHA, 2},
                                               {GL_RGB, 3},   {GL_RGBA, 4},      {0x80E1, 4}};
    for (const auto& [format, bytes] : rows) {
        SCOPED_TRACE(testing::Message() << "format " << format);
        std::vector<uint8_t> pixels(2 * bytes, 0);
        pixels[0] = 255;
        pixels[bytes] =
            100;  // with fewer than three bytes a pixel this is the first pixel's second or third channel as well
        Weather weather(2, 1, format, pixels);
        EXPECT_NEAR(100, weather.wind_at(10, 0).x, 1e-3f) << "missing channels of the last pixel are 0";
        EXPECT_NEAR(255 * std::cos(bytes == 2 ? 100 / 255.0 * 2 * M_PI : 0), weather.wind_at(-10, 0).x, 1e-2f);
    }
}

TEST(ImageSource, NeverReadsPastTheCurrentData) {
    const struct {
        const char* name;
        int32_t width, height, format;  // current; loaded as 8 × 8 RGBA
        int lit_rows;                   // of 8, that the current data hold completely
        bool answers = true;            // with data
    } rows[] = {{"as loaded", 8, 8, GL_RGBA, 8},     {"half as high", 8, 4, GL_RGBA, 4},
                {"one pixel", 1, 1, GL_RGBA, 0},     {"fewer bytes", 8, 8, GL_LUMINANCE, 2},
                {"empty", 0, 8, GL_RGBA, 0},         {"negative", -8, -8, GL_RGBA, 0},
                {"no data", 8, 8, GL_RGBA, 0, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const int32_t bytes = std::max(0, row.width) * std::max(0, row.height) * stage::bytes_per_pixel(row.format);
        std::vector<uint8_t> lit(256, 255);  // longer than the current data
        Weather weather(8, 8, GL_RGBA, lit);
        stage::Overrides& overrides = weather.host.stage().overrides;
        overrides.get_image_size = [&row](int32_t, int32_t* width, int32_t* height) {
            *width = row.width;
            *height = row.height;
        };
        overrides.get_image_format = [&row](int32_t, int32_t* format) { *format = row.format; };
        overrides.get_image_data = [&](int32_t, uint8_t** pixels) {
            if (row.answers) *pixels = lit.data();
        };
        for (int r = 0; r < 8; ++r) {
            const float wind = weather.wind_at(49, -50 + 12.5f * (static_cast<float>(r) + 0.5f)).x;
            EXPECT_EQ(r < row.lit_rows, (std::fabs(wind) > 1)) << "row " << r;
        }
        EXPECT_EQ(bytes > 0 && row.answers ? 200 : 1, weather.born_on_it(200)) << "one lit pixel is enough for births";
    }
}

TEST(ImageSource, IsReadAgainAfterEachRequest) {
    using Pixels = std::vector<uint8_t>;
    const struct {
        const char* name;
        void (*act)(stage::Stage&, int32_t image);  // by the host, while the smoke asks a spawn plug-in
        float wind;                                 // from the last pixel's first byte afterwards, 200 before
    } rows[] = {
        {"other pixels", [](auto& s, int32_t i) { stage::replace_image(s, i, 1, 2, GL_RGB, Pixels(6, 100)); }, 100},
        {"too few", [](auto& s, int32_t i) { stage::replace_image(s, i, 1, 1, GL_RGB, Pixels(3, 100)); }, 0},
        {"none", [](auto& s, int32_t i) { stage::find_image(s, i)->pixels.clear(); }, 0},
        {"no image", [](auto& s, int32_t i) { stage::remove_image(s, i); }, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Weather weather(1, 2, GL_RGB, {0, 0, 0, 200, 0, 0});
        weather.host.add_outlines("shape", {});
        weather.host.set(weather.smoke, "spawn_cont_name", "shape");
        weather.host.set(weather.smoke, "spawn_type", 2);
        weather.host.set(weather.smoke, "life_time_scale", 50.0);
        weather.host.stage().overrides.geom_dispatcher = [&](int32_t, int32_t code, void*, void* reply) {
            if (code == TOVU_REQUEST_IS_INSIDE) row.act(weather.host.stage(), weather.image);
            return *static_cast<int32_t*>(reply) = 1;
        };
        const Vector3 wind = weather.wind_at(0, 40);
        EXPECT_NEAR(row.wind, std::sqrt(dot(wind, wind)), 1e-2f);
    }
}

TEST(ImageSource, ARemovedImageIsDarkAndWindless) {
    Weather weather(1, 1, GL_LUMINANCE, {255});
    stage::remove_image(weather.host.stage(), weather.image);
    EXPECT_EQ(0.0f, weather.wind_at(0, 0).x);
    weather.host.set(weather.smoke, "life_time_scale", 0.0);
    EXPECT_EQ(0, weather.born_on_it(9)) << "no births, and live particles are off the mask";
}

}  // namespace
}  // namespace tovu
