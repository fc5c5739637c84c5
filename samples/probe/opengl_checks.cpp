#include "opengl_checks.h"

#include <tovu/opengl.h>

#include <cmath>

#include "process.h"
#include "report.h"
#include "scene_checks.h"

namespace probe {
namespace {

// Queries of later versions of OpenGL, whose constants are not in tovu/opengl.h.
enum : unsigned {
    kMatrixMode = 0x0BA0,
    kModelviewMatrix = 0x0BA6,
    kProjectionMatrix = 0x0BA7,
    kTextureMatrix = 0x0BA8,
    kDepthWriteMask = 0x0B72,
    kActiveTexture = 0x84E0,
    kClientActiveTexture = 0x84E1,
    kTexture0 = 0x84C0,
    kVertexArrayBinding = 0x85B5,
    kArrayBufferBinding = 0x8894,
    kCurrentProgram = 0x8B8D,
};

struct OpenGl {
    void(OPENGL_CALL* get_integers)(unsigned name, int* values) = nullptr;
    void(OPENGL_CALL* get_floats)(unsigned name, float* values) = nullptr;
    unsigned char(OPENGL_CALL* is_enabled)(unsigned capability) = nullptr;
    unsigned(OPENGL_CALL* get_error)() = nullptr;
};

constexpr int kNoAnswer = -12345;

template <class Function>
bool find(Function& function, const char* name) {
    function = reinterpret_cast<Function>(loaded_opengl_function(name));
    return function != nullptr;
}

// All functions are null if one of them is missing.
OpenGl loaded_opengl() {
    OpenGl found;
    const bool complete = find(found.get_integers, "glGetIntegerv") && find(found.get_floats, "glGetFloatv") &&
                          find(found.is_enabled, "glIsEnabled") && find(found.get_error, "glGetError");
    return complete ? found : OpenGl{};
}

bool are_alike(const Matrix& a, const Matrix& b) {
    float largest = 0;
    for (const float element : b) largest = std::fmax(largest, std::abs(element));
    for (size_t i = 0; i < 16; ++i)
        if (!(std::abs(a[i] - b[i]) <= 1e-5f * largest)) return false;
    return true;
}

// The last row of a projection is 0 0 0 1 or, for a perspective, a multiple of 0 0 1 0. Tests the last row of
// projection × view × inverse of the view.
bool is_projection_of(const Matrix& projection_view, const Matrix& view) {
    Matrix back{view[0], view[4], view[8], 0, view[1], view[5], view[9], 0, view[2], view[6], view[10], 0, 0, 0, 0, 1};
    Matrix displaced{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -view[12], -view[13], -view[14], 1};
    const Matrix projection = product(projection_view, product(back, displaced));
    const double distance = std::hypot(double{view[12]}, double{view[13]}, double{view[14]});
    const double size = std::hypot(double{projection[3]}, double{projection[7]}, double{projection[11]});
    const bool parallel = size <= 1e-4 && std::abs(projection[15]) > 1e-4f;
    const bool perspective = std::abs(projection[3]) <= 1e-4 * size && std::abs(projection[7]) <= 1e-4 * size &&
                             std::abs(projection[15]) <= 1e-4 * size * (1 + distance);
    return parallel || (size > 1e-4 && perspective);
}

void check_matrices(const OpenGl& gl, int32_t container) {
    int mode = 0;
    gl.get_integers(kMatrixMode, &mode);
    expect(gl_matrices, mode == GL_MODELVIEW, "the matrix mode is 0x%04X", static_cast<unsigned>(mode));
    Matrix modelview{}, projection{}, texture{};
    gl.get_floats(kModelviewMatrix, modelview.data());
    gl.get_floats(kProjectionMatrix, projection.data());
    gl.get_floats(kTextureMatrix, texture.data());
    expect(gl_matrices, are_alike(modelview, transformation_of(container)),
           "GL_MODELVIEW is not the container's transformation");
    const Matrix view = view_matrix();
    if (!std::isnan(view[0]))
        expect(gl_matrices, is_projection_of(projection, view),
               "GL_PROJECTION is no projection times the view matrix of the camera");
    const float per_unit = 1.0f / 32767;
    expect(gl_matrices,
           std::abs(texture[0] - per_unit) < 1e-7f && std::abs(texture[5] - per_unit) < 1e-7f &&
               std::abs(texture[12]) < 1e-3f && std::abs(texture[13]) < 1e-3f,
           "the texture matrix scales by %g and %g", double{texture[0]}, double{texture[5]});
}

struct State {
    unsigned name;
    int right;
    const char* words;
};
const State kStates[] = {
    {kDepthWriteMask, 1, "the depth mask"},
    {kActiveTexture, kTexture0, "the active texture unit"},
    {kClientActiveTexture, kTexture0, "the client's active texture unit"},
    {kArrayBufferBinding, 0, "the array buffer"},
    {kCurrentProgram, 0, "the program"},
    {kVertexArrayBinding, 0, "the vertex array object"},
};
const State kArrays[] = {
    {GL_VERTEX_ARRAY, 0, "GL_VERTEX_ARRAY"},
    {GL_NORMAL_ARRAY, 0, "GL_NORMAL_ARRAY"},
    {GL_COLOR_ARRAY, 0, "GL_COLOR_ARRAY"},
    {GL_TEXTURE_COORD_ARRAY, 0, "GL_TEXTURE_COORD_ARRAY"},
};

void draw_three_axes(bool in_color, bool reduced, float opacity) {
    ormixGL_glBegin(GL_LINES);
    for (int axis = 0; axis < 3; ++axis) {
        const float end[3] = {axis == 0 ? 100.0f : 0, axis == 1 ? 100.0f : 0, axis == 2 ? 100.0f : 0};
        if (!reduced && in_color) ormixGL_glColor4f(end[0] / 100, end[1] / 100, end[2] / 100, opacity);
        if (!reduced && !in_color) ormixGL_glColor4f(0.5f, 0.5f, 0.5f, opacity);
        ormixGL_glVertex3f(0, 0, 0);
        ormixGL_glVertex3fv(end);
    }
    ormixGL_glEnd();
}

}  // namespace

void check_opengl(int32_t container) {
    static const OpenGl gl = loaded_opengl();
    int mode = kNoAnswer;
    if (gl.get_integers != nullptr) gl.get_integers(kMatrixMode, &mode);
    if (mode == kNoAnswer) return;
    check_matrices(gl, container);
    for (const State& state : kStates) {
        int value = kNoAnswer;
        gl.get_integers(state.name, &value);
        if (value == kNoAnswer) {  // an OpenGL too old to know the question; the error is not the host's
            gl.get_error();
            continue;
        }
        expect(gl_state, value == state.right, "%s is %d, not %d", state.words, value, state.right);
    }
    for (const State& array : kArrays) expect(gl_state, !gl.is_enabled(array.name), "%s is enabled", array.words);
}

void draw_axes(bool reduced, float opacity) {
    if (!reduced) {
        ormixGL_glDisable(GL_TEXTURE_2D);
        ormixGL_glDisable(GL_LIGHTING);
    }
    draw_three_axes(true, reduced, opacity);
    ormixGL_glPushMatrix();
    ormixGL_glLoadIdentity();
    draw_three_axes(false, reduced, opacity);
    ormixGL_glPopMatrix();
}

}  // namespace probe
