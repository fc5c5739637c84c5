// Images: pictures that plug-ins sample and containers are textured with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "handles.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct Stage;

/// Rows without padding, channels in the order of the format, one byte each. The first row is the bottom of the
/// picture: it is where OpenGL puts texture coordinate 0 and where the smoke puts its smallest y. Loaders turn pictures
/// over.
struct Image {
    int32_t handle = kNoObject;
    std::string name;
    int32_t width = 0;            // pixels
    int32_t height = 0;           // pixels
    int32_t format = 0;           // OpenGL's constant: GL_ALPHA, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA
    std::vector<uint8_t> pixels;  // empty: plug-ins that ask for them get a null pointer
    int64_t revision = 0;         // goes up with every change, for whoever keeps a copy
};

/// 1 for GL_ALPHA and GL_LUMINANCE, 2 for GL_LUMINANCE_ALPHA, 3 for GL_RGB, 4 for GL_RGBA and every other code.
STAGE_EXPORT int32_t bytes_per_pixel(int32_t format);

/// Adds an image. pixels: width × height × bytes_per_pixel(format) bytes. An error names the image and the sizes when
/// they do not agree, a size is below 1, or the name is taken.
STAGE_EXPORT Result<int32_t> add_image(Stage& stage, std::string name, int32_t width, int32_t height, int32_t format,
                                       std::vector<uint8_t> pixels);

/// Gives an image other pixels, of any size and format. Errors as above; the image then stays as it was.
STAGE_EXPORT Result<Done> replace_image(Stage& stage, int32_t image_handle, int32_t width, int32_t height,
                                        int32_t format, std::vector<uint8_t> pixels);

STAGE_EXPORT bool remove_image(Stage& stage, int32_t image_handle);

/// Null for anything but a live image. The pointer stays good until the image is removed.
STAGE_EXPORT Image* find_image(Stage& stage, int32_t image_handle);
STAGE_EXPORT const Image* find_image(const Stage& stage, int32_t image_handle);
STAGE_EXPORT int32_t find_image_by_name(const Stage& stage, std::string_view name);

}  // namespace stage
