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

/// An OpenGL context, its framebuffer and textures. Belongs to the thread that creates it. The members are destroyed in
/// the order textures, framebuffer, context.
struct SceneCanvas {
    OpenGlContext context;
    Framebuffer frame;
    struct CachedTexture {
        int64_t revision = -1;  // revision of the uploaded image
        Texture texture;
    };
    std::map<int32_t, CachedTexture> textures;  // by image handle
    bool check_opengl = false;                  // name each faulty OpenGL call of plug-ins; slow
};

/// Creates a canvas with the scene's size and bits per channel. Uses the scene's samples per pixel only if the scene
/// draws shapes, since multisampling does not change smoke.
STAGE_EXPORT Result<SceneCanvas> make_canvas(const SceneDescription& scene);

/// Prepares a canvas for another built scene: keeps the context, removes the textures, and creates the framebuffer as
/// make_canvas does.
STAGE_EXPORT Result<Done> reuse_canvas(SceneCanvas& canvas, const SceneDescription& scene);

/// Draws the current frame: the background, then every shown container in tree order. Returns when the renderer has
/// finished. A canvas is for one built scene, since it stores the textures of that scene's images. Error: an image
/// cannot become a texture. OpenGL faults of plug-ins become complaints of the Stage.
STAGE_EXPORT Result<Done> draw_frame(SceneCanvas& canvas, BuiltScene& scene);

/// The last drawn frame. The context must be current.
STAGE_EXPORT DrawnPicture read_frame(const SceneCanvas& canvas);

/// draw_frame and read_frame. Returns bytes with straight alpha, with the scene's shoulder applied.
STAGE_EXPORT Result<Picture> draw_scene(SceneCanvas& canvas, BuiltScene& scene);

}  // namespace stage
