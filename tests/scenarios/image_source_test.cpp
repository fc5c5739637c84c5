// Images as masks and winds: which pixel lies under a position, and images that change behind the smoke's back.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstring>

#include "render_host.h"

namespace tovu {
namespace {

/// One particle at rest in the wind of the image "wind" over (−50, −50) to (50, 50), in frames of 0.25 s.
struct Weather {
    Weather(int32_t width, int32_t height, int32_t format, std::vector<uint8_t> pixels,
            stage::ParameterValues values = {}) {
        host.stage().clock.frame_period_seconds = 0.25;
        image = *stage::add_image(host.stage(), "wind", width, height, format, std::move(pixels));
        values.insert(values.begin(), {{"use_wind_image", true},
                                       {"wind_image", std::string("wind")},
                                       {"wind_force", 1020.0},
                                       {"wind_rot_z", 33.0},
                                       {"wind_image_range_x", 100.0},
                                       {"wind_image_range_y", 100.0}});
        smoke = host.smoke_of(1, values);
    }
    /// What the wind moves a particle by that stands here, in pixel values: 1020 · 0.25 s is 255.
    Vector3 wind_at(float x, float y) {
        Particle& p = *host.active(smoke).at(0);
        p.position = {x, y, 0};
        host.run_frames(1);
        return p.position - Vector3{x, y, 0};
    }
    RenderHost host;
    int32_t image = -1;
    SmokeHandle smoke;
};

struct PixelCase {
    float x, y;
    int value;  // 10 · column + 100 · row + 7
};

TEST(ImageSource, ReadsThePixelUnderThePosition) {
    const std::vector<uint8_t> pixels = {7, 0, 0, 17, 0, 0, 107, 0, 0, 117, 0, 0};
    const PixelCase rows[] = {{-50, -50, 7},   {0, 0, 117},         {49.9f, -10, 17}, {1000, 1000, 117},
                              {-1000, 0, 107}, {-0.01f, -0.01f, 7}, {-0.01f, 0, 107}, {-50, 1000, 107}};
    Weather weather(2, 2, GL_RGB, pixels);
    for (const PixelCase& row : rows)
        EXPECT_NEAR(row.value, weather.wind_at(row.x, row.y).x, 1e-3f) << row.x << ", " << row.y;
    for (const float far : {1e30f, -1e30f, std::nanf("")})
        EXPECT_EQ(0, pixel_index(far, -50, 50, 2)) << "beyond the range of an index: " << far;
    weather.host.set(weather.smoke, "wind_image_range_x", 0.0);  // both ranges from spawn, which is 0: no extent
    weather.host.run_frames(1);
    EXPECT_NEAR(7, weather.wind_at(40, 40).x, 1e-3f);
}

struct ColorCase {
    const char* name;
    std::vector<uint8_t> pixel;
    float angle_x, angle_z;  // degrees
    float strength;          // in pixel values
};

TEST(ImageSource, SecondAndThirdChannelTurnTheWind) {
    const ColorCase rows[] = {{"full, about x alone", {255, 64, 0}, 64 * 360 / 255.0f, 0, 255},
                              {"full, about z", {255, 0, 64}, 0, 64 * 360 / 255.0f, 255},
                              {"half, about both", {128, 32, 200}, 32 * 360 / 255.0f, 200 * 360 / 255.0f, 128},
                              {"none", {0, 99, 99}, 0, 0, 0}};
    for (const ColorCase& row : rows)
        for (const int reference : {0, 1}) {
            SCOPED_TRACE(testing::Message() << row.name << ", reference " << reference);
            Weather weather(1, 1, GL_RGB, row.pixel, {{"reference", reference}});
            weather.host.container(weather.smoke).placement.scale = {2, 3, 4};
            const float degree = 0.017453293f;
            Vector3 expected{std::cos(row.angle_z * degree),
                             std::sin(row.angle_z * degree) * std::cos(row.angle_x * degree),
                             std::sin(row.angle_z * degree) * std::sin(row.angle_x * degree)};
            expected = expected * row.strength;
            if (reference == 1) expected = {2 * expected.x, 3 * expected.y, 4 * expected.z};
            const Vector3 wind = weather.wind_at(0, 0);
            EXPECT_NEAR(expected.x, wind.x, 1e-3f);
            EXPECT_NEAR(expected.y, wind.y, 1e-3f);
            EXPECT_NEAR(expected.z, wind.z, 1e-3f);
        }
}

struct FormatCase {
    const char* name;
    int32_t format;
    int bytes;
};

TEST(ImageSource, FormatsSayHowFarAPixelReaches) {
    const FormatCase rows[] = {
        {"alpha", GL_ALPHA, 1}, {"luminance", GL_LUMINANCE, 1}, {"luminance alpha", GL_LUMINANCE_ALPHA, 2},
        {"rgb", GL_RGB, 3},     {"rgba", GL_RGBA, 4},           {"another code", 0x80E1, 4}};
    for (const FormatCase& row : rows) {
        SCOPED_TRACE(row.name);
        const auto bytes = static_cast<size_t>(row.bytes);
        std::vector<uint8_t> pixels(2 * bytes, 0);
        pixels[0] = 255;
        pixels[bytes] = 100;  // under three bytes a pixel it is the first pixel's second or third channel as well
        Weather weather(2, 1, row.format, pixels);
        EXPECT_EQ(row.bytes, weather.host.block(weather.smoke).wind_source.bytes_per_pixel);
        EXPECT_NEAR(100, weather.wind_at(10, 0).x, 1e-3f) << "what the last pixel lacks is 0";
        const float turned = 255 * std::cos(0.017453293f * (bytes == 2 ? 100 * 360 / 255.0f : 0));
        EXPECT_NEAR(turned, weather.wind_at(-10, 0).x, 1e-2f);
    }
}

/// Pixels that end where memory does: a byte read past them ends the test.
class GuardedPixels {
  public:
    explicit GuardedPixels(size_t bytes) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        pages_ = (bytes + page - 1) / page * page;
        memory_ = static_cast<uint8_t*>(
            mmap(nullptr, pages_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(memory_ + pages_, page, PROT_NONE);
        pixels_ = memory_ + pages_ - bytes;
        std::memset(pixels_, 255, bytes);
    }
    ~GuardedPixels() { munmap(memory_, pages_ + static_cast<size_t>(sysconf(_SC_PAGESIZE))); }
    GuardedPixels(const GuardedPixels&) = delete;
    GuardedPixels& operator=(const GuardedPixels&) = delete;
    uint8_t* data() { return pixels_; }

  private:
    size_t pages_;
    uint8_t* memory_;
    uint8_t* pixels_;
};

struct ChangeCase {
    const char* name;
    int32_t width, height, format;  // of the moment; loaded as 8 × 8 RGBA
    int lit_rows;                   // of 8, that the data still reach in full
};

TEST(ImageSource, NeverReadsPastTheDataOfTheMoment) {
    const ChangeCase rows[] = {{"as loaded", 8, 8, GL_RGBA, 8}, {"half as high", 8, 4, GL_RGBA, 4},
                               {"one pixel", 1, 1, GL_RGBA, 0}, {"fewer bytes", 8, 8, GL_LUMINANCE, 2},
                               {"empty", 0, 8, GL_RGBA, 0},     {"less than empty", -8, -8, GL_RGBA, 0},
                               {"no data", 8, 8, GL_RGBA, 0}};
    for (const ChangeCase& row : rows) {
        SCOPED_TRACE(row.name);
        const bool none = std::string_view(row.name) == "no data";
        const int32_t bytes = std::max(0, row.width) * std::max(0, row.height) * stage::bytes_per_pixel(row.format);
        GuardedPixels guarded(static_cast<size_t>(bytes));
        Weather weather(8, 8, GL_RGBA, std::vector<uint8_t>(256, 255),
                        {{"spawn_image", std::string("wind")}, {"spawn_range_x", 100.0}, {"spawn_range_y", 100.0}});
        stage::Overrides& overrides = weather.host.stage().overrides;
        overrides.get_image_size = [&row](int32_t, int32_t* width, int32_t* height) {
            *width = row.width;
            *height = row.height;
        };
        overrides.get_image_format = [&row](int32_t, int32_t* format) { *format = row.format; };
        overrides.get_image_data = [&](int32_t, uint8_t** pixels) {
            if (!none) *pixels = guarded.data();
        };
        for (int r = 0; r < 8; ++r) {
            const float wind = weather.wind_at(49, -50 + 12.5f * (static_cast<float>(r) + 0.5f)).x;
            EXPECT_EQ(r<row.lit_rows, std::fabs(wind)> 1) << "row " << r;
        }
        weather.host.set(weather.smoke, "spawn_type", 3);
        weather.host.set(weather.smoke, "number_of_particles", 200);
        weather.host.run_frames(3);
        const int born = weather.host.active_count(weather.smoke);
        EXPECT_EQ(bytes > 0 && !none ? 200 : 1, born) << "one pixel is enough to be born on";
    }
}

TEST(ImageSource, AnImageThatIsGoneIsDarkAndStill) {
    Weather weather(1, 1, GL_LUMINANCE, {255},
                    {{"spawn_image", std::string("wind")}, {"spawn_range_x", 9.0}, {"spawn_range_y", 9.0}});
    stage::remove_image(weather.host.stage(), weather.image);
    EXPECT_EQ(0.0f, weather.wind_at(0, 0).x);
    weather.host.set(weather.smoke, "spawn_type", 3);
    weather.host.set(weather.smoke, "number_of_particles", 9);
    weather.host.set(weather.smoke, "life_time_scale", 0.0);
    weather.host.run_frames(3);
    EXPECT_EQ(0, weather.host.active_count(weather.smoke)) << "nothing is born, and what lives stands off the mask";
}

}  // namespace
}  // namespace tovu
