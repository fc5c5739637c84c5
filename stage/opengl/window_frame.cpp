#include "window_frame.h"

#include <epoxy/gl.h>

namespace stage {

void clear_window(int32_t width, int32_t height, const std::array<float, 3>& color) {
    glViewport(0, 0, width, height);
    glDisable(GL_SCISSOR_TEST);
    glClearColor(color[0], color[1], color[2], 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

Picture read_window(int32_t width, int32_t height) {
    Picture picture{width, height, kPictureRgb, {}};
    picture.bytes.resize(picture_byte_count(width, height, kPictureRgb));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, picture.bytes.data());
    return picture;
}

}  // namespace stage
