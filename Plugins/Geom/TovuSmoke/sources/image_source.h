// An image laid over a rectangle of the particles' x-y plane: a mask for births, or a map of the wind.
#pragma once

#include <cstdint>

namespace tovu {

/// A host image and the rectangle it covers. Owns nothing. Order and types are fixed.
struct ImageSource {
    int32_t image = -1;
    float rect_min_x = 0;  // first column
    float rect_min_y = 0;  // first row
    float rect_max_x = 0;
    float rect_max_y = 0;
    int32_t width = 0;  // pixels, as the host reported them at load
    int32_t height = 0;
    int32_t bytes_per_pixel = 0;
    int32_t inversion_flag = 2;  // the opposite of `spawn_image_bool`; read by nothing
};

}  // namespace tovu
