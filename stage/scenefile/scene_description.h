// The content of a scene file as plain values: the reader fills them, the builder creates a scene from them.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "stage/assets/text_outline.h"
#include "stage/plugins/plugin.h"
#include "stage/scene/container.h"

namespace stage {

using Triple = std::array<float, 3>;

/// Where a value was written: "file:line:column", or the option that set it. Messages about the value start with it.
using Place = std::string;

/// A value of a parameter. Its kind is checked against the plug-in when the scene is built.
struct ParameterSetting {
    std::string name;      // as registered
    ParameterValue value;  // as written; a whole number outside the range of int is a double
    Place place;
    double frame_rate = 0.0;  // rate that a value of a look is made for; 0: the scene's values_rate
};

struct CameraDescription {
    Triple position = {0.0f, 0.0f, 300.0f};  // world units
    std::optional<Triple> look_at;           // world point; replaces pan and tilt
    float pan = 0.0f;                        // degrees about Y; 0 looks along -Z, positive turns to the left
    float tilt = 0.0f;                       // degrees; positive looks up
    float roll = 0.0f;                       // degrees about the line of sight
    float field_of_view = 45.0f;             // degrees, vertical, 1…179
};

enum class GeometryKind { kRectangle, kEllipse, kPolygon, kMesh, kText, kPicture, kPlate };

/// The shape of a container; smoke can be born from its outline. Only the fields of its kind are used.
struct GeometryDescription {
    GeometryKind kind = GeometryKind::kRectangle;
    float width = 100.0f;                      // rectangle, ellipse, picture, plate: container units
    float height = 100.0f;                     // rectangle, ellipse, picture, plate: container units
    int32_t segments = 64;                     // ellipse: corners of its outline, 3…4096
    std::vector<std::array<float, 2>> points;  // polygon: corners in order, three or more
    std::filesystem::path file;                // mesh, picture
    std::string text;                          // text
    Place text_place;
    std::string font;     // text: a font file or an installed family, empty for DejaVu Sans
    float size = 100.0f;  // text: units per em, about the distance between two lines
    TextAlignment alignment = TextAlignment::kCentre;  // text
    float threshold = 0.5f;  // picture: smallest brightness × opacity of a pixel inside the shape, 0…1
    std::string image;       // plate: name of an image; empty for other kinds
    Place image_place;
    std::optional<Triple>
        fill;  // flat shapes: red, green, blue, 0…1 each; none draws nothing. Plate: multiplies its image
    Place place;
};

/// An image over the world's XY plane that brightens and darkens what a container draws.
struct LightDescription {
    std::string image;  // name of an image
    Place image_place;
    std::array<float, 2> position = {0, 0};  // centre, world units
    std::array<float, 2> size = {0, 0};      // width and height, world units, above 0
};

struct ContainerDescription {
    std::string name;             // unique in the scene
    int32_t parent = -1;          // index of an earlier container, -1 for none
    Triple position = {0, 0, 0};  // parent's units
    Triple rotation = {0, 0, 0};  // degrees about X, Y, Z
    Triple scale = {1, 1, 1};     // factors
    bool has_plugin = false;      // the keys `plugin` or `parameters` are given
    std::string plugin;           // "smoke", a library beside it or a file name; empty means the smoke
    Place plugin_place;
    std::vector<ParameterSetting> parameters;  // in the order written
    std::string texture = "puff";              // name of an image, "none" for no texture
    Place texture_place;
    std::vector<std::string> more_textures;  // likewise; each adds a container, see texture_variants.h
    int32_t variants = 1;    // number of containers that this one was split into, itself included; 0 for the others
    bool depth_test = true;  // false: drawn over everything drawn before, at any depth
    Blend blend = Blend::kAlpha;
    float opacity = 1.0f;  // 0…1
    bool pulses = false;   // lost births are intended, so that lint does not report them
    std::optional<LightDescription> light;
    std::optional<GeometryDescription> geometry;
    std::string look;             // as written, empty for none; the look's layers are its children
    int32_t look_container = -1;  // for a layer: index of the container with its look
    Place place;
};

/// A change that happens once, before the first frame whose time is at least `time`.
struct TimelineEntry {
    double time = 0.0;       // seconds from the first picture, 0 or more
    int32_t container = -1;  // index; -1 for an entry about an image
    std::vector<ParameterSetting> parameters;
    std::string press;  // name of a push button, empty for none
    Place press_place;
    int32_t burst = 0;  // births in that frame; 0 for none
    Place burst_place;
    std::optional<GeometryDescription> geometry;  // the container's new shape
    std::string image;                            // name of an image of the scene, empty for none
    std::filesystem::path file;                   // its new picture
    Place file_place;
    Place place;
};

enum class Ease { kLinear, kSmooth, kStep };  // kStep: the previous value until the time of the key
enum class TrackProperty { kPosition, kRotation, kScale, kGeometry, kOpacity, kParameter };

struct TrackKey {
    double time = 0.0;                            // seconds, above the time of the previous key
    Triple value = {0, 0, 0};                     // position, rotation or scale; for opacity the first number, 0…1
    std::optional<GeometryDescription> geometry;  // for the property geometry
    Ease ease = Ease::kLinear;                    // of the change from the previous key
    ParameterSetting setting{};                   // for a parameter
};

/// Keyed values of one property of a container; constant before the first key and after the last.
struct Track {
    int32_t container = -1;  // index
    TrackProperty property = TrackProperty::kPosition;
    std::vector<TrackKey> keys;  // one or more
    std::string parameter = {};  // for kParameter: its name
};

enum class Play {
    kLoop,  // repeats; the first picture before the start
    kHold,  // the last picture stays; the first picture before the start
    kOnce,  // black and transparent before the first picture and after the last
};

/// A picture or an image sequence.
struct ImageDescription {
    std::vector<std::filesystem::path> files;  // one or more, in the order they are shown
    double frame_rate = 50.0;                  // sequence: pictures per second, above 0
    double start = 0.0;                        // sequence: scene time of its first picture, seconds
    Play play = Play::kLoop;                   // sequence
    Place place;
};

using ImageDescriptions = std::map<std::string, ImageDescription>;  // by the name that containers and parameters use

struct SceneDescription {
    std::filesystem::path file;                 // the scene file; relative paths in it start from its folder
    std::set<std::filesystem::path> looks;      // files of the looks that the scene uses
    std::array<int32_t, 2> size = {1280, 720};  // pixels, 1…16384 each
    double frame_rate = 50.0;                   // frames per second, 1…1000
    double values_rate = 0.0;                   // frame rate that the parameters are made for; 0: frame_rate
    double length = 5.0;                        // seconds
    double prewarm = 0.0;                       // seconds simulated before the first picture
    uint32_t seed = 1;
    std::optional<Triple> background;  // 0…1 each; none is transparent
    int32_t bits = 16;                 // per channel of the framebuffer: 8, or 16 (floating point)
    std::optional<float> shoulder;     // brightness above which light is compressed, 0…0.99; none: clipped at 1
    int32_t samples = 4;               // samples per pixel in scenes with visible shapes; 1: no antialiasing
    CameraDescription camera;
    ImageDescriptions images;
    std::vector<ContainerDescription> containers;  // parents before their children
    std::vector<TimelineEntry> timeline;           // sorted by time; entries of the same time in the order of the file
    std::vector<Track> tracks;
};

}  // namespace stage
