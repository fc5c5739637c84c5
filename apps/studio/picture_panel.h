// The picture, and how it is looked at.
#pragma once

#include "panels.h"
#include "stage/opengl/textures.h"

namespace tovu {

/// What is shown in the window besides type and lines. Belongs to the window's OpenGL context.
struct ShownPictures {
    stage::Texture frame;
    std::shared_ptr<const DrawnFrame> in_frame;  // the one that `frame` holds
    stage::Texture backdrop;
    std::filesystem::path backdrop_file;  // that `backdrop` holds
};

/// Uploads a new frame, if there is one.
stage::Result<stage::Done> follow_frame(ShownPictures& pictures, const Studio& studio);

/// bare: the picture alone, without tools.
void picture_panel(PanelFrame& frame, ShownPictures& pictures, const Area& area, bool bare);

}  // namespace tovu
