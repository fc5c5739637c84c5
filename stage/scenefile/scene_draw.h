// Draws a running scene through real OpenGL.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "scene_build.h"
#include "stage/assets/picture.h"
#include "stage/opengl/context.h"
#include "stage/opengl/framebuffer.h"
#include "stage/opengl/textures.h"

namespace stage {

/// A context of its own, the frame and the textures. Belongs to the thread that made it. Textures go before the frame,
/// the frame before the context.
struct SceneCanvas {
    OpenGlContext context;
    Framebuffer frame;
    struct CachedTexture {
        int64_t revision = -1;  // of the image that was uploaded
        Texture texture;
    };
    std::map<int32_t, CachedTexture> textures;  // by image handle
    bool check_opengl = false;                  // name each faulty OpenGL call of plug-ins; slow
};

/// A frame of the scene's size and bits per channel. It has the scene's samples per pixel if a shape with a fill can be
/// seen; for smoke alone they cost time and change nothing.
STAGE_EXPORT Result<SceneCanvas> make_canvas(const SceneDescription& scene);

/// Prepares a canvas for another built scene: a frame as make_canvas makes it, no textures, the same context.
STAGE_EXPORT Result<Done> reuse_canvas(SceneCanvas& canvas, const SceneDescription& scene);

/// Draws the frame that was run last: the background, then every container that is shown, in tree order. Returns when
/// the renderer has drawn it. A canvas serves one built scene: it keeps the textures of that scene's images.
/// Fails when an image is no texture; what plug-ins do wrong with OpenGL goes to the Stage's complaints.
STAGE_EXPORT Result<Done> draw_frame(SceneCanvas& canvas, BuiltScene& scene);

/// The frame that was drawn last. The context must be current.
STAGE_EXPORT DrawnPicture read_frame(const SceneCanvas& canvas);

/// Both, as bytes with straight alpha and the scene's shoulder.
STAGE_EXPORT Result<Picture> draw_scene(SceneCanvas& canvas, BuiltScene& scene);

}  // namespace stage
