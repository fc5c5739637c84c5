#include "pass.h"

#include <epoxy/gl.h>
#include <fmt/format.h>

#include <tuple>

#include "errors.h"
#include "real_opengl.h"
#include "stage/opengl_table/dispatch.h"

namespace stage {
namespace {

using Constants = std::initializer_list<unsigned int>;

constexpr int kStackCount = 3;

struct StackKind {
    GLenum mode;
    GLenum depth_query;
    GLenum matrix_query;
    const char* name;
};

constexpr StackKind kStacks[kStackCount] = {
    {GL_PROJECTION, GL_PROJECTION_STACK_DEPTH, GL_PROJECTION_MATRIX, "GL_PROJECTION"},
    {GL_MODELVIEW, GL_MODELVIEW_STACK_DEPTH, GL_MODELVIEW_MATRIX, "GL_MODELVIEW"},
    {GL_TEXTURE, GL_TEXTURE_STACK_DEPTH, GL_TEXTURE_MATRIX, "GL_TEXTURE"},
};

/// State that glPushAttrib and glPushClientAttrib do not save.
struct SavedState {
    GLint depths[kStackCount];
    Matrix matrices[kStackCount];
    Matrix light_matrix;  // of the second texture unit, in a pass with a light
    GLint program = 0;
    GLint vertex_array = 0;
    OpenGlDispatch dispatch;
};

SavedState save_state(const PassSettings& settings) {
    SavedState saved{};
    saved.dispatch = current_opengl();
    glGetIntegerv(GL_CURRENT_PROGRAM, &saved.program);
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &saved.vertex_array);
    glUseProgram(0);
    glBindVertexArray(0);  // first, since the client attributes saved below belong to the bound object
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    if (settings.light.texture != 0) {
        glActiveTexture(GL_TEXTURE1);
        glGetFloatv(GL_TEXTURE_MATRIX, saved.light_matrix.data());
    }
    glActiveTexture(GL_TEXTURE0);  // texture matrices and texture coordinate arrays are per unit; plug-ins use unit 0
    glClientActiveTexture(GL_TEXTURE0);
    for (int i = 0; i < kStackCount; ++i) {
        glGetIntegerv(kStacks[i].depth_query, &saved.depths[i]);
        glGetFloatv(kStacks[i].matrix_query, saved.matrices[i].data());
    }
    return saved;
}

void set_matrices(const PassSettings& settings) {
    constexpr float kShortToOne = 1.0f / 32767.0f;  // OpenGL does not scale texture coordinates given as shorts
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(settings.projection_view.data());
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glScalef(kShortToOne, kShortToOne, 1.0f);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(settings.world.data());
}

// Binds a texture to the active unit; 0 turns texturing off.
void bind_texture(unsigned int texture) {
    for (const unsigned int target : Constants{GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP})
        glDisable(target);
    if (texture == 0) return;
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
}

void set_texture(unsigned int texture) {
    bind_texture(texture);
    if (texture != 0) glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
}

// Generates a texture coordinate of the light from a world coordinate: (coordinate - position) / size + 1/2.
void generate_coordinate(GLenum coordinate, GLenum enable, size_t axis, const PassLight& light) {
    GLfloat plane[4] = {0, 0, 0, 0.5f - light.position[axis] / light.size[axis]};
    plane[axis] = 1.0f / light.size[axis];
    glTexGeni(coordinate, GL_TEXTURE_GEN_MODE, GL_EYE_LINEAR);
    glTexGenfv(coordinate, GL_EYE_PLANE, plane);
    glEnable(enable);
}

// Changes GL_MODELVIEW. Eye coordinates are world coordinates, since GL_MODELVIEW does not contain the camera.
// Therefore a plug-in that loads the identity and draws in world coordinates gets the same light.
void set_light(const PassLight& light) {
    if (light.texture == 0) return;
    glActiveTexture(GL_TEXTURE1);
    bind_texture(light.texture);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    for (const auto& [combine, texture, previous] : {std::tuple{GL_COMBINE_RGB, GL_SOURCE0_RGB, GL_SOURCE1_RGB},
                                                     {GL_COMBINE_ALPHA, GL_SOURCE0_ALPHA, GL_SOURCE1_ALPHA}}) {
        glTexEnvi(GL_TEXTURE_ENV, combine, GL_MODULATE);
        glTexEnvi(GL_TEXTURE_ENV, texture, GL_TEXTURE);
        glTexEnvi(GL_TEXTURE_ENV, previous, GL_PREVIOUS);
    }
    glTexEnvf(GL_TEXTURE_ENV, GL_RGB_SCALE, 4.0f);
    glTexEnvf(GL_TEXTURE_ENV, GL_ALPHA_SCALE, 1.0f);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();  // OpenGL transforms planes by the current modelview matrix
    generate_coordinate(GL_S, GL_TEXTURE_GEN_S, 0, light);
    generate_coordinate(GL_T, GL_TEXTURE_GEN_T, 1, light);
    glActiveTexture(GL_TEXTURE0);
}

void set_client_state() {
    for (const unsigned int array : Constants{GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        glDisableClientState(array);
    glBindBuffer(GL_ARRAY_BUFFER, 0);  // array pointers are addresses in memory
}

void set_state(const PassSettings& settings) {
    set_light(settings.light);
    set_matrices(settings);
    set_texture(settings.texture);
    set_client_state();
    for (const unsigned int off : Constants{GL_LIGHTING, GL_CULL_FACE, GL_FOG, GL_STENCIL_TEST, GL_FRAMEBUFFER_SRGB})
        glDisable(off);
    glEnable(GL_BLEND);
    glBlendEquation(GL_FUNC_ADD);
    glBlendFuncSeparate(GL_SRC_ALPHA, settings.blend == Blend::kAdditive ? GL_ONE : GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                        GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_ALPHA_TEST);
    glAlphaFunc(GL_GREATER, 0.0f);
    if (settings.depth_test)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glShadeModel(GL_SMOOTH);
    glLineWidth(1.0f);
    glPointSize(1.0f);
    glColor4fv(settings.color.data());
}

/// Between glBegin and glEnd glGetIntegerv is an error and leaves its output unchanged.
bool is_inside_begin() {
    GLint depth = -1;
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &depth);
    return depth == -1;
}

void end_open_begin(std::vector<std::string>& complaints) {
    if (!is_inside_begin()) return;
    glEnd();
    take_opengl_errors();  // discards the errors that is_inside_begin caused
    complaints.emplace_back("a glBegin was left without its glEnd");
}

void restore_stack(const StackKind& stack, GLint depth_before, const Matrix& matrix,
                   std::vector<std::string>& complaints) {
    GLint depth = 0;
    glGetIntegerv(stack.depth_query, &depth);
    if (depth > depth_before)
        complaints.push_back(
            fmt::format("{} glPushMatrix on {} without glPopMatrix", depth - depth_before, stack.name));
    if (depth < depth_before)
        complaints.push_back(
            fmt::format("{} glPopMatrix on {} without glPushMatrix", depth_before - depth, stack.name));
    glMatrixMode(stack.mode);
    for (; depth > depth_before; --depth) glPopMatrix();
    for (; depth < depth_before; ++depth) glPushMatrix();
    glLoadMatrixf(matrix.data());
}

void restore_state(const SavedState& saved, const PassSettings& settings, std::vector<std::string>& complaints) {
    if (settings.light.texture != 0) {
        glActiveTexture(GL_TEXTURE1);
        glMatrixMode(GL_TEXTURE);
        glLoadMatrixf(saved.light_matrix.data());
    }
    glActiveTexture(GL_TEXTURE0);
    for (int i = 0; i < kStackCount; ++i) restore_stack(kStacks[i], saved.depths[i], saved.matrices[i], complaints);
    glPopClientAttrib();
    glPopAttrib();
    glBindVertexArray(static_cast<GLuint>(saved.vertex_array));
    glUseProgram(static_cast<GLuint>(saved.program));
    use_opengl(saved.dispatch);
}

}  // namespace

std::vector<std::string> draw_pass(const PassSettings& settings, const std::function<void()>& draw) {
    std::vector<std::string> complaints;
    const SavedState saved = save_state(settings);
    set_state(settings);
    take_opengl_errors();  // discards errors from before this pass
    take_opengl_complaints();

    use_opengl(settings.check_every_call ? checking_opengl() : real_opengl());
    draw();

    end_open_begin(complaints);
    for (std::string& complaint : take_opengl_complaints()) complaints.push_back(std::move(complaint));
    for (const std::string& error : take_opengl_errors()) complaints.push_back("OpenGL: " + error);
    restore_state(saved, settings, complaints);
    return complaints;
}

}  // namespace stage
