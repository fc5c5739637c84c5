#include "scene_draw.h"

#include <epoxy/gl.h>

#include "stage/opengl/pass.h"
#include "stage/opengl/shapes.h"
#include "stage/opengl/straight_picture.h"
#include "stage/plugins/frames.h"
#include "stage/plugins/instance.h"

namespace stage {

namespace {

Result<unsigned int> texture_of(SceneCanvas& canvas, const Stage& stage, int32_t image_handle) {
    const Image* image = find_image(stage, image_handle);
    if (image == nullptr || image->pixels.empty()) return 0u;
    SceneCanvas::CachedTexture& cached = canvas.textures[image_handle];
    if (cached.revision != image->revision) {
        Result<Texture> texture =
            make_texture({image->width, image->height, static_cast<PictureFormat>(image->format), image->pixels});
        if (!texture) return Error{"image '" + image->name + "': " + texture.error().message};
        cached = {image->revision, std::move(*texture)};
    }
    return cached.texture.number();
}

const ShapeTrack* shape_of(const BuiltScene& scene, int32_t container_handle) {
    for (const ShapeTrack& shape : scene.shapes) {
        if (scene.container_handles[static_cast<size_t>(shape.container)] == container_handle) return &shape;
    }
    return nullptr;
}

// Draws plates and shapes with a fill colour. Other shapes are only read by plug-ins.
Result<Done> draw_shape(SceneCanvas& canvas, const BuiltScene& scene, PassSettings settings, const DrawItem& item) {
    const ShapeTrack* shape = shape_of(scene, item.container.handle);
    const Geometry* geometry = geometry_of(*scene.stage, item.container.handle);
    const std::optional<Triple> fill = shape == nullptr ? std::nullopt : shown_fill(*shape);
    if (geometry == nullptr || !fill) return Done{};
    settings.color = {(*fill)[0], (*fill)[1], (*fill)[2], item.opacity};
    std::vector<float> points;
    std::vector<int32_t> outline_sizes;
    for (const Mesh& mesh : geometry->meshes) {
        for (const Vector3& vertex : mesh.vertices) points.insert(points.end(), {vertex.x, vertex.y, vertex.z});
        outline_sizes.push_back(static_cast<int32_t>(mesh.vertices.size()));
    }
    if (shown_image(*shape).empty()) {
        draw_filled_outlines(settings, points, outline_sizes);
        return Done{};
    }
    const Result<unsigned int> texture =
        texture_of(canvas, *scene.stage, find_image_by_name(*scene.stage, shown_image(*shape)));
    if (!texture) return texture.error();
    settings.texture = *texture;
    draw_plate(settings, points);
    return Done{};
}

Result<Done> draw_item(SceneCanvas& canvas, BuiltScene& scene, const Matrix& projection_view, const DrawItem& item) {
    Stage& stage = *scene.stage;
    const Appearance& appearance = item.container.appearance;
    PassSettings settings;
    settings.projection_view = projection_view;
    settings.world = item.world;
    settings.blend = appearance.blend;
    settings.depth_test = appearance.depth_test;
    settings.check_every_call = canvas.check_opengl;
    const Result<unsigned int> light = texture_of(canvas, stage, appearance.light.image_handle);
    if (!light) return light.error();
    settings.light = {*light, appearance.light.position, appearance.light.size};
    if (!item.has_instance) return draw_shape(canvas, scene, settings, item);
    const Result<unsigned int> texture = texture_of(canvas, stage, appearance.texture_handle);
    if (!texture) return texture.error();
    settings.texture = *texture;
    const int32_t handle = item.container.handle;
    const std::string& owner = plugin(instance_of(stage, handle)->plugin).name;
    const auto wrong = draw_pass(settings, [&] { call_render(stage, handle, 0, item.opacity); });
    for (const std::string& complaint : wrong)
        complain(stage, describe_call(stage, "PLUGIN_RENDER_OPENGL", owner, handle), complaint);
    return Done{};
}

}  // namespace

namespace {

bool is_filled(const std::optional<GeometryDescription>& geometry) {
    return geometry && geometry->fill && geometry->kind != GeometryKind::kPlate;
}

// True if the scene draws a shape at any time, whose edges need antialiasing.
bool shows_shapes(const SceneDescription& scene) {
    for (const ContainerDescription& container : scene.containers)
        if (is_filled(container.geometry)) return true;
    for (const TimelineEntry& entry : scene.timeline)
        if (is_filled(entry.geometry)) return true;
    for (const Track& track : scene.tracks)
        for (const TrackKey& key : track.keys)
            if (is_filled(key.geometry)) return true;
    return false;
}

Result<Framebuffer> make_frame(const SceneDescription& scene) {
    return Framebuffer::create(scene.size[0], scene.size[1],
                               scene.bits == 8 ? FrameDepth::kBytes : FrameDepth::kFloat16,
                               shows_shapes(scene) ? scene.samples : 1);
}

}  // namespace

Result<SceneCanvas> make_canvas(const SceneDescription& scene) {
    Result<OpenGlContext> context = OpenGlContext::create();
    if (!context) return context.error();
    Result<Framebuffer> frame = make_frame(scene);
    if (!frame) return frame.error();
    return SceneCanvas{std::move(*context), std::move(*frame), {}, false};
}

Result<Done> reuse_canvas(SceneCanvas& canvas, const SceneDescription& scene) {
    if (Result<Done> current = canvas.context.make_current(); !current) return current;
    canvas.textures.clear();
    Result<Framebuffer> frame = make_frame(scene);
    if (!frame) return frame.error();
    canvas.frame = std::move(*frame);
    return Done{};
}

Result<Done> draw_frame(SceneCanvas& canvas, BuiltScene& scene) {
    if (const Result<Done> current = canvas.context.make_current(); !current) return current;
    FrameColor background;
    if (scene.description.background) {
        const Triple& color = *scene.description.background;
        background = {color[0], color[1], color[2], 1.0f};
    }
    canvas.frame.clear(background);
    const Camera& camera = scene.stage->camera;
    const float aspect = static_cast<float>(canvas.frame.width()) / static_cast<float>(canvas.frame.height());
    const Matrix projection_view = multiply(projection_matrix(camera, aspect), view_matrix(camera));
    Result<Done> drawn = Done{};
    for_each_shown(*scene.stage, [&](const DrawItem& item) {
        if (drawn) drawn = draw_item(canvas, scene, projection_view, item);
    });
    glFinish();
    return drawn;
}

DrawnPicture read_frame(const SceneCanvas& canvas) {
    return canvas.frame.read_drawn();
}

Result<Picture> draw_scene(SceneCanvas& canvas, BuiltScene& scene) {
    if (const Result<Done> drawn = draw_frame(canvas, scene); !drawn) return drawn.error();
    return straight_bytes(read_frame(canvas), scene.description.shoulder);
}

}  // namespace stage
