// Images: pictures that plug-ins sample and containers are textured with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "handles.h"
#include "pixel_format.h"
#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct Stage;

/// Rows without padding, channels in the order of the format, one byte each. The first row is the bottom of the
/// picture, at texture coordinate t = 0. Picture files begin with the top row: their loaders turn them over.
struct Image {
    int32_t handle = kNoObject;
    std::string name;
    int32_t width = 0;            // pixels
    int32_t height = 0;           // pixels
    int32_t format = 0;           // a PictureFormat
    std::vector<uint8_t> pixels;  // if empty, plug-ins get a null pointer
    int64_t revision = 0;         // incremented at every change, so that copies can be updated
};

/// Adds an image. pixels: width × height × bytes_per_pixel(format) bytes. Errors: the sizes do not agree or are below
/// 1; the name exists already.
STAGE_EXPORT Result<int32_t> add_image(Stage& stage, std::string name, int32_t width, int32_t height, int32_t format,
                                       std::vector<uint8_t> pixels);

/// Replaces the pixels of an image, with any size and format. Errors as for add_image; the image stays unchanged then.
STAGE_EXPORT Result<Done> replace_image(Stage& stage, int32_t image_handle, int32_t width, int32_t height,
                                        int32_t format, std::vector<uint8_t> pixels);

/// False if it is not an image.
STAGE_EXPORT bool remove_image(Stage& stage, int32_t image_handle);

/// Null for anything but a live image. The pointer stays valid until the image is removed.
STAGE_EXPORT Image* find_image(Stage& stage, int32_t image_handle);
STAGE_EXPORT const Image* find_image(const Stage& stage, int32_t image_handle);
STAGE_EXPORT int32_t find_image_by_name(const Stage& stage, std::string_view name);

}  // namespace stage
