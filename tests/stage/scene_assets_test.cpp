// The pictures and meshes that scenes share are what scenes take them for.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "outline_inside.h"
#include "stage/assets/mesh_file.h"
#include "stage/assets/picture_file.h"
#include "stage/assets/trace_outline.h"

using namespace stage;
using namespace stage_test;

namespace {

const std::string kAssets = TOVU_SOURCE_DIR "/scenes/assets/";

TEST(SceneAssets, TheLogoHasAHoleAnIslandAndTwoWisps) {
    const Result<Picture> logo = read_picture(kAssets + "logo.png");
    ASSERT_TRUE(logo) << logo.error().message;
    ASSERT_EQ(logo->format, kPictureLuminance);
    const auto outlines = trace_outlines({logo->width, logo->height, logo->bytes}, {});
    ASSERT_TRUE(outlines) << outlines.error().message;
    EXPECT_EQ(outlines->size(), 4u);
    const struct {
        double x, y;
        bool inside;
    } kPoints[] = {{-25, -20, true}, {0, -25, true}, {-10, -20, false},
                   {5, 35, true},    {27, 22, true}, {-40, 40, false}};
    for (const auto& point : kPoints) EXPECT_EQ(any_encloses(*outlines, point.x, point.y), point.inside) << point.x;
    // As a mask, a lit border would let smoke start outside of the picture's rectangle.
    for (int i = 0; i < 256; ++i)
        for (const int border : {i, 255 * 256 + i, 256 * i, 256 * i + 255})
            EXPECT_EQ(logo->bytes[static_cast<size_t>(border)], 0);
}

TEST(SceneAssets, TheWindTurnsAroundTheMiddleIntoARing) {
    const Result<Picture> wind = read_picture(kAssets + "wind_vortex.png");
    ASSERT_TRUE(wind) << wind.error().message;
    ASSERT_EQ(wind->format, kPictureRgb);
    for (int row = 0; row < wind->height; ++row) {
        for (int column = 0; column < wind->width; ++column) {
            const uint8_t* pixel = &wind->bytes[static_cast<size_t>(3 * (row * wind->width + column))];
            const double x = (column + 0.5) / 64 - 1, y = (row + 0.5) / 64 - 1, radius = std::hypot(x, y);
            const double angle_z = pixel[2] / 255.0 * 2 * std::numbers::pi;
            EXPECT_GT(pixel[0], 0);
            EXPECT_EQ(pixel[1], 0);
            const double outward = (std::cos(angle_z) * x + std::sin(angle_z) * y) / radius;
            const double around = (std::sin(angle_z) * x - std::cos(angle_z) * y) / radius;
            EXPECT_GT(around, 0.65) << column << ", " << row;
            if (radius < 0.5) {
                EXPECT_GT(outward, 0) << column << ", " << row;
            } else if (radius > 0.6) {
                EXPECT_LT(outward, 0) << column << ", " << row;
            }
        }
    }
}

TEST(SceneAssets, ThePanLiesInTheXzPlane) {
    const auto pan = read_mesh_file(kAssets + "pan.obj");
    ASSERT_TRUE(pan) << pan.error().message;
    ASSERT_EQ(pan->size(), 1u);
    Mesh flat = pan->front();
    for (Vector3& v : flat.vertices) {
        EXPECT_EQ(v.y, 0);
        v.y = v.z;
    }
    EXPECT_TRUE(encloses(flat, 66, 0) && encloses(flat, -59, 0) && encloses(flat, 0, 39));
    EXPECT_FALSE(encloses(flat, 70, 0) || encloses(flat, -61, 0) || encloses(flat, 0, 41));
}

}  // namespace
