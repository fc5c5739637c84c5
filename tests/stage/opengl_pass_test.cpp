// A pass restores the OpenGL state and reports faults of its drawing.
#include <epoxy/gl.h>
#include <tovu/opengl.h>

#include <cstdlib>
#include <map>
#include <span>
#include <utility>

#include "expect.h"
#include "opengl_fixture.h"
#include "stage/opengl/pass.h"
#include "stage/opengl/real_opengl.h"
#include "stage/opengl/textures.h"
#include "stage/opengl_table/dispatch.h"
#include "stage/plugins/random_stream.h"

namespace {

using Constants = std::initializer_list<unsigned int>;

using testing::ElementsAre;
using testing::IsEmpty;

/// Values of OpenGL's state, by query.
using State = std::map<GLenum, std::vector<double>>;

constexpr GLenum kMatrices[] = {GL_PROJECTION_MATRIX, GL_MODELVIEW_MATRIX, GL_TEXTURE_MATRIX};
constexpr GLenum kFourNumbers[] = {GL_CURRENT_COLOR, GL_CURRENT_TEXTURE_COORDS};
constexpr GLenum kSwitches[] = {
    GL_BLEND,         GL_ALPHA_TEST,   GL_DEPTH_TEST,   GL_LIGHTING,    GL_TEXTURE_2D,          GL_CULL_FACE,
    GL_FOG,           GL_STENCIL_TEST, GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY, GL_NORMAL_ARRAY,
    GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T};
constexpr GLenum kDepths[] = {GL_PROJECTION_STACK_DEPTH, GL_MODELVIEW_STACK_DEPTH, GL_TEXTURE_STACK_DEPTH,
                              GL_ATTRIB_STACK_DEPTH, GL_CLIENT_ATTRIB_STACK_DEPTH};
constexpr GLenum kBlending[] = {GL_BLEND_SRC_RGB,   GL_BLEND_DST_RGB,  GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA,
                                GL_ALPHA_TEST_FUNC, GL_ALPHA_TEST_REF, GL_DEPTH_WRITEMASK, GL_DEPTH_FUNC};
constexpr GLenum kOthers[] = {GL_MATRIX_MODE,     GL_LINE_WIDTH,        GL_POINT_SIZE,      GL_POINT_SMOOTH_HINT,
                              GL_CURRENT_PROGRAM, GL_VERTEX_ARRAY_SIZE, GL_COLOR_ARRAY_TYPE};
constexpr GLenum kBound[] = {GL_TEXTURE_BINDING_2D, GL_ACTIVE_TEXTURE, GL_CLIENT_ACTIVE_TEXTURE,
                             GL_ARRAY_BUFFER_BINDING, GL_VERTEX_ARRAY_BINDING};

State whole_state() {
    State state;
    const auto ask = [&](std::span<const GLenum> queries, size_t count) {
        for (const GLenum query : queries) {
            state[query].resize(count);
            glGetDoublev(query, state[query].data());
        }
    };
    ask(kMatrices, 16);
    ask(kFourNumbers, 4);
    for (const std::span<const GLenum> queries :
         std::initializer_list<std::span<const GLenum>>{kSwitches, kDepths, kBlending, kOthers, kBound})
        ask(queries, 1);
    GLint environment = 0;
    glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &environment);
    state[GL_TEXTURE_ENV] = {static_cast<double>(environment)};
    for (const GLenum array :
         Constants{GL_VERTEX_ARRAY_POINTER, GL_COLOR_ARRAY_POINTER, GL_TEXTURE_COORD_ARRAY_POINTER}) {
        void* pointer = nullptr;
        glGetPointerv(array, &pointer);
        state[array] = {static_cast<double>(reinterpret_cast<uintptr_t>(pointer))};
    }
    return state;
}

constexpr stage::Matrix kHalf = {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 1};

/// Changes all state that the contract's functions can change; matrix stacks stay balanced.
void change_everything() {
    static const float numbers[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 1, 2, 3, 1};
    for (const unsigned int mode : Constants{GL_PROJECTION, GL_TEXTURE, GL_MODELVIEW}) {
        ormixGL_glMatrixMode(mode);
        ormixGL_glPushMatrix();
        ormixGL_glPopMatrix();
        ormixGL_glLoadIdentity();
        ormixGL_glMultMatrixf(numbers);
        ormixGL_glTranslatef(4, 5, 6);
    }
    ormixGL_glMatrixMode(GL_TEXTURE);
    for (const unsigned int on : Constants{GL_LIGHTING, GL_CULL_FACE, GL_FOG, GL_STENCIL_TEST}) ormixGL_glEnable(on);
    for (const unsigned int off : Constants{GL_BLEND, GL_ALPHA_TEST, GL_DEPTH_TEST, GL_TEXTURE_2D})
        ormixGL_glDisable(off);
    for (const unsigned int array : Constants{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY, GL_NORMAL_ARRAY})
        ormixGL_glEnableClientState(array);
    ormixGL_glVertexPointer(2, GL_FLOAT, 0, numbers);
    ormixGL_glColorPointer(3, GL_FLOAT, 0, numbers);
    ormixGL_glTexCoordPointer(1, GL_SHORT, 0, numbers);
    ormixGL_glDepthMask(GL_FALSE);
    ormixGL_glHint(GL_POINT_SMOOTH_HINT, GL_NICEST);
    ormixGL_glLineWidth(2);
    ormixGL_glPointSize(7);
    ormixGL_glColor4f(0.1f, 0.2f, 0.3f, 0.4f);
    ormixGL_glTexCoord2s(3, 4);
}

class PassTest : public OpenGlTest {
  protected:
    stage::Framebuffer frame = make_frame(4);
};

TEST_F(PassTest, PutsBackEverythingThatWasChanged) {
    // The caller has OpenGL state of its own, such as a window toolkit.
    GLuint vertex_array = 0;
    GLuint buffer = 0;
    glGenVertexArrays(1, &vertex_array);
    glGenBuffers(1, &buffer);
    const State clean = whole_state();
    glBindVertexArray(vertex_array);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glActiveTexture(GL_TEXTURE1);
    glClientActiveTexture(GL_TEXTURE1);
    glMatrixMode(GL_TEXTURE);
    glLoadMatrixf(kHalf.data());
    glMatrixMode(GL_MODELVIEW);
    glPointSize(3);
    const State before = whole_state();
    stage::use_opengl(stage::silent_opengl());

    stage::Result<stage::Texture> texture = stage::make_texture({1, 1, stage::kPictureLuminance, {255}});
    ASSERT_TRUE(texture);
    stage::PassSettings settings;
    settings.texture = texture->number();
    settings.light = {texture->number(), {0, 0}, {1, 1}};
    settings.blend = stage::Blend::kAdditive;
    State inside;
    const auto complaints = stage::draw_pass(settings, [&] {
        change_everything();
        inside = whole_state();
    });

    EXPECT_THAT(complaints, IsEmpty());
    EXPECT_EQ(before, whole_state());
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    EXPECT_EQ(stage::silent_opengl().Begin, stage::current_opengl().Begin);
    size_t changed = 0;
    for (const auto& [name, values] : before) changed += inside[name] != values;
    EXPECT_GT(changed, 30u) << "the drawing must have changed what is compared";

    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glActiveTexture(GL_TEXTURE0);
    glClientActiveTexture(GL_TEXTURE0);
    glPointSize(1);
    EXPECT_EQ(clean, whole_state()) << "arrays outside of the caller's own vertex array object";
    glDeleteVertexArrays(1, &vertex_array);
    glDeleteBuffers(1, &buffer);
}

// The other settings show in pixels (opengl_frame_test.cpp).
TEST_F(PassTest, ShowsTheDrawingItsTwoMatrices) {
    stage::PassSettings settings;
    settings.projection_view[12] = 5;
    settings.world[12] = 7;
    stage::draw_pass(settings, [&] {
        State state = whole_state();
        EXPECT_EQ(5, state[GL_PROJECTION_MATRIX][12]);
        EXPECT_EQ(7, state[GL_MODELVIEW_MATRIX][12]);
        EXPECT_THAT(state[GL_MATRIX_MODE], ElementsAre(GL_MODELVIEW));
        EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    });
}

void push_twice() {
    ormixGL_glPushMatrix();
    ormixGL_glPushMatrix();
}

void push_another_stack() {
    ormixGL_glMatrixMode(GL_PROJECTION);
    ormixGL_glPushMatrix();
}

void load_between_begin_and_end() {
    ormixGL_glBegin(GL_QUADS);
    ormixGL_glLoadIdentity();
    ormixGL_glEnd();
}

TEST_F(PassTest, NamesFaultsAndUndoesThem) {
    const std::pair<void (*)(), const char*> cases[] = {
        {[] { ormixGL_glBegin(GL_QUADS); }, "glBegin was left without its glEnd"},
        {push_twice, "2 glPushMatrix on GL_MODELVIEW without glPopMatrix"},
        {push_another_stack, "1 glPushMatrix on GL_PROJECTION without glPopMatrix"},
        {[] { ormixGL_glPopMatrix(); }, "glPopMatrix(): matrix stack underflow"},
        {[] { ormixGL_glEnable(0x1234); }, "glEnable(4660): invalid enumerant"},
        {[] { ormixGL_glLineWidth(-1); }, "glLineWidth(-1): invalid value"},
        {load_between_begin_and_end, "glEnd(): invalid operation"},
    };
    const State before = whole_state();
    for (const auto& [draw, complaint] : cases) {
        SCOPED_TRACE(complaint);
        stage::PassSettings settings;
        EXPECT_EQ(1u, stage::draw_pass(settings, draw).size());
        EXPECT_EQ(before, whole_state());
        settings.check_every_call = true;
        EXPECT_THAT(stage::draw_pass(settings, draw), ElementsAre(testing::HasSubstr(complaint)));
        EXPECT_EQ(before, whole_state());
        EXPECT_EQ(GLenum{GL_NO_ERROR}, glGetError());
    }
}

TEST_F(PassTest, NamesAPopBelowTheCallersMatrices) {
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glTranslatef(1, 2, 3);
    const State before = whole_state();
    EXPECT_THAT(stage::draw_pass({}, [] { ormixGL_glPopMatrix(); }),
                ElementsAre("1 glPopMatrix on GL_MODELVIEW without glPushMatrix"));
    EXPECT_EQ(before, whole_state());
    glPopMatrix();
    glLoadIdentity();
}

TEST(RealOpenGl, ADriverDrawsFromTheProcesssNumbers) {
    stage::RandomStream of_an_instance;
    const auto hint = std::exchange(epoxy_glHint, [](GLenum, GLenum) { (void)std::rand(); });
    const auto get_error = std::exchange(epoxy_glGetError, [] { return static_cast<GLenum>(std::rand() & 0); });
    std::srand(3);
    {
        const stage::DrawFrom instance(&of_an_instance);
        stage::real_opengl().Hint(0, 0);
        stage::checking_opengl().Hint(0, 0);
    }
    EXPECT_EQ(tovu::draws_since(3), 3);
    epoxy_glHint = hint;
    epoxy_glGetError = get_error;
}

}  // namespace
