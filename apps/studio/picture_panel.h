// The panel with the picture and its view tools.
#pragma once

#include "panels.h"
#include "stage/opengl/textures.h"

namespace tovu {

/// The textures of the panel. They belong to the window's OpenGL context.
struct ShownPictures {
    stage::Texture frame;
    std::shared_ptr<const DrawnFrame> in_frame;  // the picture in `frame`
    stage::Texture backdrop;
    std::filesystem::path backdrop_file;  // the file in `backdrop`
};

/// Uploads the picture if it is new.
stage::Result<stage::Done> follow_frame(ShownPictures& pictures, const Studio& studio);

/// Draws the panel. bare: only the picture, without tools.
void picture_panel(PanelFrame& frame, ShownPictures& pictures, const Area& area, bool bare);

}  // namespace tovu
