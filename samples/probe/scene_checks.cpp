#include "scene_checks.h"

#include <tovu/host_services.h>
#include <tovu/opengl.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "process.h"
#include "report.h"
#include "text_memory.h"

namespace probe {
namespace {

constexpr float kNotSet = std::numeric_limits<float>::quiet_NaN();
constexpr double kRadians = 3.14159265358979323846 / 180;

struct Numbers {
    float x = kNotSet, y = kNotSet, z = kNotSet;
};

Matrix not_set() {
    Matrix matrix;
    matrix.fill(kNotSet);
    return matrix;
}

bool are_near(double a, double b, double tolerance) {
    return std::abs(a - b) <= tolerance;  // false for not-a-number
}

double length(const Numbers& v) {
    return std::hypot(double{v.x}, double{v.y}, double{v.z});
}

// ---- Out values ----

struct Outs {
    float floats[16];
    int32_t wholes[2];
    uint8_t bytes[4];
    uint8_t* pixels;
};

struct Question {
    const char* service;
    void (*ask)(int32_t object, Outs& outs);
};
const Question kAboutObjects[] = {
    {"_api__container_get_absolute_position",
     [](int32_t object, Outs& o) {
         _api__container_get_absolute_position(object, &o.floats[0], &o.floats[1], &o.floats[2]);
     }},
    {"_api__container_get_absolute_rotation",
     [](int32_t object, Outs& o) {
         _api__container_get_absolute_rotation(object, &o.floats[0], &o.floats[1], &o.floats[2]);
     }},
    {"_api__container_get_absolute_scaling",
     [](int32_t object, Outs& o) {
         _api__container_get_absolute_scaling(object, &o.floats[0], &o.floats[1], &o.floats[2]);
     }},
    {"_api__container_get_transformation_matrix",
     [](int32_t object, Outs& o) { _api__container_get_transformation_matrix(object, o.floats); }},
    {"_api__container_get_inverse_matrix",
     [](int32_t object, Outs& o) { _api__container_get_inverse_matrix(object, o.floats); }},
    {"_api__container_get_geometry",
     [](int32_t object, Outs& o) { _api__container_get_geometry(object, &o.wholes[0]); }},
    {"_api__get_geom_detail", [](int32_t object, Outs& o) { _api__get_geom_detail(object, &o.wholes[0]); }},
    {"_api__get_geom_geomod", [](int32_t object, Outs& o) { _api__get_geom_geomod(object, 2, 0, &o.wholes[0]); }},
    {"_api__get_image_size", [](int32_t object, Outs& o) { _api__get_image_size(object, &o.wholes[0], &o.wholes[1]); }},
    {"_api__get_image_format", [](int32_t object, Outs& o) { _api__get_image_format(object, &o.wholes[0]); }},
    {"_api__get_image_data", [](int32_t object, Outs& o) { _api__get_image_data(object, &o.pixels); }},
    {"_api__get_camera_pan", [](int32_t object, Outs& o) { _api__get_camera_pan(object, &o.floats[0]); }},
    {"_api__get_camera_tilt", [](int32_t object, Outs& o) { _api__get_camera_tilt(object, &o.floats[0]); }},
    {"_api__get_camera_view_matrix", [](int32_t object, Outs& o) { _api__get_camera_view_matrix(object, o.floats); }},
    {"_api__get_camera_position", [](int32_t object, Outs& o) { _api__get_camera_position(object, &o.wholes[0]); }},
    {"_api__get_camera_direction", [](int32_t object, Outs& o) { _api__get_camera_direction(object, &o.wholes[0]); }},
    {"_api__get_position",
     [](int32_t object, Outs& o) { _api__get_position(object, &o.floats[0], &o.floats[1], &o.floats[2]); }},
};
const Question kAboutMeshAccess[] = {
    {"_api__geomod_get_info",
     [](int32_t access, Outs& o) {
         _api__geomod_get_info(access, &o.wholes[0], &o.wholes[1], &o.bytes[0], &o.bytes[1], &o.bytes[2]);
     }},
    {"_api__geomod_goto_mesh", [](int32_t access, Outs& o) { _api__geomod_goto_mesh(access, 0, &o.wholes[0]); }},
    {"_api__geomod_get_num_mesh_verices",
     [](int32_t access, Outs& o) { _api__geomod_get_num_mesh_verices(access, 0, &o.wholes[0]); }},
    {"_api__geomod_goto_vertex", [](int32_t access, Outs& o) { _api__geomod_goto_vertex(access, 0, 0, &o.wholes[0]); }},
    {"_api__geomod_get_vertex",
     [](int32_t access, Outs& o) { _api__geomod_get_vertex(access, 0, &o.floats[0], &o.floats[1], &o.floats[2]); }},
};

void expect_untouched(Check check, const Question& question, int32_t object) {
    constexpr uint8_t kBefore = 0x5a;
    Outs outs;
    std::memset(&outs, kBefore, sizeof outs);
    question.ask(object, outs);
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&outs);
    const bool untouched = std::all_of(bytes, bytes + sizeof outs, [](uint8_t byte) { return byte == kBefore; });
    expect(check, untouched, "%s(%d) set its out values", question.service, static_cast<int>(object));
}

}  // namespace

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result;
    for (size_t column = 0; column < 16; column += 4)
        for (size_t row = 0; row < 4; ++row) {
            double sum = 0;
            for (size_t k = 0; k < 4; ++k) sum += double{a[4 * k + row]} * double{b[column + k]};
            result[column + row] = static_cast<float>(sum);
        }
    return result;
}

bool are_inverse(const Matrix& a, const Matrix& b) {
    for (size_t column = 0; column < 16; column += 4)
        for (size_t row = 0; row < 4; ++row) {
            double sum = 0, size = 0;
            for (size_t k = 0; k < 4; ++k) {
                const double term = double{a[4 * k + row]} * double{b[column + k]};
                sum += term;
                size += std::abs(term);
            }
            if (!are_near(sum, column == 4 * row ? 1 : 0, 1e-5 * (1 + size))) return false;
        }
    return true;
}

Matrix transformation_of(int32_t container) {
    Matrix matrix = not_set();
    _api__container_get_transformation_matrix(container, matrix.data());
    return matrix;
}

Matrix view_matrix() {
    Matrix matrix = not_set();
    _api__get_camera_view_matrix(_api__get_cameraid(-1, "RENDERCAMERA", TOVU_OBJECT_CAMERA), matrix.data());
    return matrix;
}

void check_look_ups() {
    const char* const name = "no object has this name";
    const int32_t number = std::numeric_limits<int32_t>::max();
    expect(object_none, _api__get_objectid(name, "", TOVU_OBJECT_CONTAINER) == -1, "_api__get_objectid found '%s'",
           name);
    expect(object_none, _api__get_image_objectid(name) == -1, "_api__get_image_objectid found '%s'", name);
    expect(object_none, _api__get_objectid_from_objectid(number) == -1,
           "_api__get_objectid_from_objectid found number %d", static_cast<int>(number));
}

void check_unknown_object(Check check, int32_t object) {
    for (const Question& question : kAboutObjects) expect_untouched(check, question, object);
    int32_t reply = 0x5a5a5a5a;
    expect(dispatch_none, _api__geom_dispatcher(object, 0, nullptr, &reply) == 0 && reply == 0x5a5a5a5a,
           "_api__geom_dispatcher(%d) took a request", static_cast<int>(object));
}

void check_invalid_handles() {
    int32_t unknown = std::numeric_limits<int32_t>::max();
    while (unknown > 0 && _api__object_valid(unknown)) unknown /= 2;
    check_unknown_object(out_invalid, unknown);
    for (const Question& question : kAboutMeshAccess) expect_untouched(out_invalid, question, 0);
}

// ---- Containers ----

void check_placement(int32_t container) {
    const Matrix matrix = transformation_of(container);
    Matrix inverse = not_set();
    _api__container_get_inverse_matrix(container, inverse.data());
    Numbers position, degrees, scaling;
    _api__container_get_absolute_position(container, &position.x, &position.y, &position.z);
    _api__container_get_absolute_rotation(container, &degrees.x, &degrees.y, &degrees.z);
    _api__container_get_absolute_scaling(container, &scaling.x, &scaling.y, &scaling.z);

    const auto column = [&](size_t i) { return Numbers{matrix[4 * i], matrix[4 * i + 1], matrix[4 * i + 2]}; };
    const auto dot = [](const Numbers& a, const Numbers& b) {
        return double{a.x} * double{b.x} + double{a.y} * double{b.y} + double{a.z} * double{b.z};
    };
    const Numbers x = column(0), y = column(1), z = column(2);
    const double box = length(x) * length(y) * length(z);
    const Numbers across{y.y * z.z - y.z * z.y, y.z * z.x - y.x * z.z, y.x * z.y - y.y * z.x};
    const bool flat = std::abs(dot(x, across)) <= 1e-6 * box;  // scaled to nothing: no inverse. Not so for not-a-number
    if (!flat) expect(matrix_inverse, are_inverse(matrix, inverse), "of container %d", static_cast<int>(container));

    const double tolerance = 1e-5 * (1 + length(position));
    expect(matrix_placement,
           are_near(matrix[12], position.x, tolerance) && are_near(matrix[13], position.y, tolerance) &&
               are_near(matrix[14], position.z, tolerance),
           "_api__container_get_absolute_position gives %g %g %g, the matrix leads 0 0 0 to %g %g %g",
           double{position.x}, double{position.y}, double{position.z}, double{matrix[12]}, double{matrix[13]},
           double{matrix[14]});
    // Unevenly scaled parents shear what they turn: three angles and three factors then do not give the matrix.
    const bool sheared = std::abs(dot(x, y)) > 1e-4 * length(x) * length(y) ||
                         std::abs(dot(y, z)) > 1e-4 * length(y) * length(z) ||
                         std::abs(dot(z, x)) > 1e-4 * length(z) * length(x);
    if (sheared) return;
    const double sx = std::sin(degrees.x * kRadians), cx = std::cos(degrees.x * kRadians);
    const double sy = std::sin(degrees.y * kRadians), cy = std::cos(degrees.y * kRadians);
    const double sz = std::sin(degrees.z * kRadians), cz = std::cos(degrees.z * kRadians);
    const double turned[3][3] = {{cy * cz, sx * sy * cz + cx * sz, -cx * sy * cz + sx * sz},  // columns
                                 {-cy * sz, -sx * sy * sz + cx * cz, cx * sy * sz + sx * cz},
                                 {sy, -sx * cy, cx * cy}};
    const double factors[3] = {scaling.x, scaling.y, scaling.z};
    for (size_t i = 0; i < 3; ++i)
        for (size_t row = 0; row < 3; ++row)
            expect(matrix_placement,
                   are_near(matrix[4 * i + row], turned[i][row] * factors[i], 1e-4 * (1e-3 + length(column(i)))),
                   "rotation %g %g %g and scaling %g %g %g make element %zu %g, the matrix has %g", double{degrees.x},
                   double{degrees.y}, double{degrees.z}, factors[0], factors[1], factors[2], 4 * i + row,
                   turned[i][row] * factors[i], double{matrix[4 * i + row]});
    expect(matrix_placement, matrix[3] == 0 && matrix[7] == 0 && matrix[11] == 0 && matrix[15] == 1,
           "elements 3, 7, 11 and 15 are not 0, 0, 0 and 1");
}

// ---- The camera ----

void check_camera() {
    const int32_t camera = _api__get_cameraid(-1, "RENDERCAMERA", TOVU_OBJECT_CAMERA);
    if (camera == -1) return;
    const Matrix view = view_matrix();
    int32_t position_handle = -1, direction_handle = -1;
    Numbers position, direction;
    float pan = kNotSet, tilt = kNotSet;
    _api__get_camera_position(camera, &position_handle);
    _api__get_camera_direction(camera, &direction_handle);
    _api__get_position(position_handle, &position.x, &position.y, &position.z);
    _api__get_position(direction_handle, &direction.x, &direction.y, &direction.z);
    _api__get_camera_pan(camera, &pan);
    _api__get_camera_tilt(camera, &tilt);

    const Matrix transposed{view[0], view[4], view[8],  0, view[1], view[5], view[9], 0,
                            view[2], view[6], view[10], 0, 0,       0,       0,       1};
    Matrix turn = view;
    turn[12] = turn[13] = turn[14] = 0;
    expect(camera_view, are_inverse(turn, transposed), "the view matrix scales or shears");
    const auto seen = [&](const Numbers& v, size_t row) {
        return double{view[row]} * double{v.x} + double{view[4 + row]} * double{v.y} +
               double{view[8 + row]} * double{v.z};
    };
    const double tolerance = 1e-5 * (1 + length(position));
    for (size_t row = 0; row < 3; ++row) {
        expect(camera_view, are_near(seen(position, row) + double{view[12 + row]}, 0, tolerance),
               "the view matrix leads the position %g %g %g elsewhere", double{position.x}, double{position.y},
               double{position.z});
        expect(camera_view, are_near(seen(direction, row), row == 2 ? -1 : 0, 1e-4),
               "the view matrix leads the direction %g %g %g elsewhere", double{direction.x}, double{direction.y},
               double{direction.z});
    }
    const double level = std::cos(tilt * kRadians);
    expect(camera_angles,
           are_near(-std::sin(pan * kRadians) * level, direction.x, 1e-4) &&
               are_near(std::sin(tilt * kRadians), direction.y, 1e-4) &&
               are_near(-std::cos(pan * kRadians) * level, direction.z, 1e-4),
           "pan %g and tilt %g are not the direction %g %g %g", double{pan}, double{tilt}, double{direction.x},
           double{direction.y}, double{direction.z});
}

// ---- Meshes and images ----

namespace {

int32_t mesh_access_of(int32_t geometry) {
    int32_t detail = 0, access = 0;
    _api__get_geom_detail(geometry, &detail);
    _api__get_geom_geomod(geometry, 2, detail, &access);
    return access;
}

}  // namespace

void check_own_meshes(int32_t own_geometry) {
    const int32_t access = mesh_access_of(own_geometry);
    expect(mesh_none, access == 0, "_api__get_geom_geomod gives %d for this plug-in's geometry",
           static_cast<int>(access));
}

void check_meshes(const std::string& name) {
    if (name.empty()) return;
    const int32_t container = name[0] == '#' ? _api__get_objectid_from_objectid(std::atoi(name.c_str() + 1))
                                             : _api__get_objectid(name.c_str(), "", TOVU_OBJECT_CONTAINER);
    int32_t geometry = -1;
    _api__container_get_geometry(container, &geometry);
    const int32_t access = mesh_access_of(geometry);
    if (access == 0) return;
    int32_t total = -1, meshes = -1, mesh = 0;
    uint8_t flags[3] = {};
    _api__geomod_init(access);
    _api__geomod_get_info(access, &total, &meshes, &flags[0], &flags[1], &flags[2]);
    expect(mesh_counts, total >= 0 && meshes >= 0 && meshes <= total, "'%s' has %d meshes with %d vertices",
           name.c_str(), static_cast<int>(meshes), static_cast<int>(total));
    int64_t sum = 0;
    for (int32_t m = 0; m < meshes && sum <= total; ++m) {
        m == 0 ? _api__geomod_goto_mesh(access, 0, &mesh) : _api__geomod_next_mesh(access, &mesh);
        int32_t count = -1, vertex = 0;
        _api__geomod_get_num_mesh_verices(access, mesh, &count);
        sum += count;
        for (int32_t v = 0; v < count && sum <= total; ++v) {
            v == 0 ? _api__geomod_goto_vertex(access, mesh, 0, &vertex)
                   : _api__geomod_next_vertex(access, mesh, &vertex);
            Numbers at;
            _api__geomod_get_vertex(access, vertex, &at.x, &at.y, &at.z);
            expect(mesh_counts, std::isfinite(length(at)), "'%s', mesh %d, vertex %d is %g %g %g", name.c_str(),
                   static_cast<int>(m), static_cast<int>(v), double{at.x}, double{at.y}, double{at.z});
        }
    }
    expect(mesh_counts, sum == total, "'%s' has %d vertices, and its meshes have %lld", name.c_str(),
           static_cast<int>(total), static_cast<long long>(sum));
}

void check_image(const std::string& name) {
    const int32_t image = name.empty() ? -1 : _api__get_image_objectid(name.c_str());
    if (image == -1) return;
    expect(object_valid, _api__object_valid(image) != 0, "image %d does not exist", static_cast<int>(image));
    int32_t width = 0, height = 0, format = 0;
    uint8_t* pixels = nullptr;
    _api__get_image_size(image, &width, &height);
    _api__get_image_format(image, &format);
    _api__get_image_data(image, &pixels);
    const size_t channels = format == GL_ALPHA || format == GL_LUMINANCE ? 1
                            : format == GL_LUMINANCE_ALPHA               ? 2
                            : format == GL_RGB                           ? 3
                            : format == GL_RGBA                          ? 4
                                                                         : 0;
    expect(image_pixels, width > 0 && height > 0 && channels > 0, "'%s' has %d x %d pixels of format 0x%04X",
           name.c_str(), static_cast<int>(width), static_cast<int>(height), static_cast<unsigned>(format));
    if (pixels == nullptr || width <= 0 || height <= 0) return;
    const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) * channels;
    const size_t readable = accessible_bytes(reinterpret_cast<uintptr_t>(pixels), 'r', bytes);
    expect(image_pixels, readable == bytes, "%zu of the %zu bytes of '%s' are readable", readable, bytes, name.c_str());
}

void check_random() {
    int highest = 0;
    bool negative = false;
    for (int i = 0; i < 64; ++i) {
        const int drawn = std::rand();
        negative = negative || drawn < 0;
        highest = drawn > highest ? drawn : highest;
    }
    expect(random_range, !negative && highest > RAND_MAX / 4, "the highest of 64 numbers is %d%s, RAND_MAX is %d",
           highest, negative ? ", some are negative" : "", RAND_MAX);
}

}  // namespace probe
