#include "shape_build.h"

#include <cmath>

#include "stage/assets/mesh_file.h"
#include "stage/assets/picture_file.h"
#include "stage/assets/shapes.h"
#include "stage/assets/text_outline.h"
#include "stage/assets/trace_outline.h"

namespace stage {

namespace {

// Brightness × opacity of each pixel. Brightness uses the weights of Rec. 601, in 1/256.
Mask mask_of(const Picture& picture, float threshold) {
    Mask mask{picture.width, picture.height, {}, static_cast<uint8_t>(std::lround(threshold * 255.0f))};
    const auto step = static_cast<size_t>(bytes_per_pixel(picture.format));
    const bool colour = picture.format == kPictureRgb || picture.format == kPictureRgba;
    const bool alpha = picture.format == kPictureRgba || picture.format == kPictureLuminanceAlpha;
    mask.bytes.reserve(picture.bytes.size() / step);
    for (size_t i = 0; i + step <= picture.bytes.size(); i += step) {
        const uint8_t* pixel = picture.bytes.data() + i;
        const int brightness = colour ? (77 * pixel[0] + 150 * pixel[1] + 29 * pixel[2]) / 256 : pixel[0];
        const int opacity = alpha ? pixel[step - 1] : 255;
        mask.bytes.push_back(static_cast<uint8_t>(brightness * opacity / 255));
    }
    return mask;
}

Result<std::vector<Mesh>> build_text(const GeometryDescription& geometry, std::vector<std::string>& warnings) {
    Result<TextOutlines> outlines =
        make_text_outlines({geometry.text, geometry.font, geometry.size, geometry.alignment});
    if (!outlines) return outlines.error();
    for (const std::string& missing : outlines->missing) warnings.push_back(geometry.text_place + ": " + missing);
    return std::move(outlines->meshes);
}

Result<std::vector<Mesh>> build_picture(const GeometryDescription& geometry) {
    const Result<Picture> picture = read_picture(geometry.file);
    if (!picture) return picture.error();
    return trace_outlines(mask_of(*picture, geometry.threshold), geometry.width, geometry.height);
}

Mesh polygon(const GeometryDescription& geometry) {
    Mesh mesh;
    for (const auto& [x, y] : geometry.points) mesh.vertices.push_back({x, y, 0.0f});
    return mesh;
}

}  // namespace

Result<std::vector<Mesh>> build_shape(const GeometryDescription& geometry, std::vector<std::string>& warnings) {
    switch (geometry.kind) {
        case GeometryKind::kRectangle:
        case GeometryKind::kPlate:
            return std::vector{make_rectangle(geometry.width, geometry.height)};
        case GeometryKind::kEllipse:
            return std::vector{make_ellipse(geometry.width, geometry.height, geometry.segments)};
        case GeometryKind::kPolygon:
            return std::vector{polygon(geometry)};
        case GeometryKind::kMesh:
            return read_mesh_file(geometry.file.string());
        case GeometryKind::kText:
            return build_text(geometry, warnings);
        case GeometryKind::kPicture:
            break;
    }
    return build_picture(geometry);
}

}  // namespace stage
