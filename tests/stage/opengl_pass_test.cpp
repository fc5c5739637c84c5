// What a pass leaves behind: nothing, and a line for everything that its drawing did wrong.
#include <epoxy/gl.h>

#include "Plugins/Geom/TovuSmoke/host/opengl.h"
#include "opengl_fixture.h"
#include "stage/opengl/dispatch.h"
#include "stage/opengl/pass.h"
#include "stage/opengl/textures.h"

namespace {

using Constants = std::initializer_list<unsigned int>;

using testing::ElementsAre;
using testing::IsEmpty;

/// Numbers that OpenGL answers, by the name of what they describe.
using State = std::map<std::string, std::vector<double>>;

void ask(State& state, const char* name, GLenum query, size_t count) {
    std::vector<double> values(count);
    glGetDoublev(query, values.data());
    state[name] = values;
}

#define ASK(query, count) ask(state, #query, query, count)

State whole_state() {
    State state;
    for (const unsigned int query :
         Constants{GL_BLEND, GL_ALPHA_TEST, GL_DEPTH_TEST, GL_LIGHTING, GL_TEXTURE_2D, GL_CULL_FACE, GL_FOG,
                   GL_STENCIL_TEST, GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY, GL_NORMAL_ARRAY})
        state["enabled " + std::to_string(query)] = {glIsEnabled(query) ? 1.0 : 0.0};
    ASK(GL_PROJECTION_MATRIX, 16);
    ASK(GL_MODELVIEW_MATRIX, 16);
    ASK(GL_TEXTURE_MATRIX, 16);
    ASK(GL_PROJECTION_STACK_DEPTH, 1);
    ASK(GL_MODELVIEW_STACK_DEPTH, 1);
    ASK(GL_TEXTURE_STACK_DEPTH, 1);
    ASK(GL_ATTRIB_STACK_DEPTH, 1);
    ASK(GL_CLIENT_ATTRIB_STACK_DEPTH, 1);
    ASK(GL_MATRIX_MODE, 1);
    ASK(GL_BLEND_SRC_RGB, 1);
    ASK(GL_BLEND_DST_RGB, 1);
    ASK(GL_BLEND_SRC_ALPHA, 1);
    ASK(GL_BLEND_DST_ALPHA, 1);
    ASK(GL_ALPHA_TEST_FUNC, 1);
    ASK(GL_ALPHA_TEST_REF, 1);
    ASK(GL_DEPTH_WRITEMASK, 1);
    ASK(GL_DEPTH_FUNC, 1);
    ASK(GL_CURRENT_COLOR, 4);
    ASK(GL_CURRENT_TEXTURE_COORDS, 4);
    ASK(GL_LINE_WIDTH, 1);
    ASK(GL_POINT_SIZE, 1);
    ASK(GL_POINT_SMOOTH_HINT, 1);
    ASK(GL_TEXTURE_BINDING_2D, 1);
    ASK(GL_ACTIVE_TEXTURE, 1);
    ASK(GL_CLIENT_ACTIVE_TEXTURE, 1);
    ASK(GL_ARRAY_BUFFER_BINDING, 1);
    ASK(GL_VERTEX_ARRAY_BINDING, 1);
    ASK(GL_CURRENT_PROGRAM, 1);
    ASK(GL_VERTEX_ARRAY_SIZE, 1);
    ASK(GL_COLOR_ARRAY_TYPE, 1);
    GLint environment = 0;
    glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &environment);
    state["environment"] = {static_cast<double>(environment)};
    for (const unsigned int array :
         Constants{GL_VERTEX_ARRAY_POINTER, GL_COLOR_ARRAY_POINTER, GL_TEXTURE_COORD_ARRAY_POINTER}) {
        void* pointer = nullptr;
        glGetPointerv(array, &pointer);
        state["pointer " + std::to_string(array)] = {static_cast<double>(reinterpret_cast<uintptr_t>(pointer))};
    }
    return state;
}

/// Everything that the contract's functions can change, left changed; stacks balanced.
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
    // A caller with a state of its own, as a window's toolkit has.
    GLuint vertex_array = 0;
    GLuint buffer = 0;
    glGenVertexArrays(1, &vertex_array);
    glGenBuffers(1, &buffer);
    const State clean = whole_state();
    glBindVertexArray(vertex_array);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glActiveTexture(GL_TEXTURE1);
    glClientActiveTexture(GL_TEXTURE1);
    glPointSize(3);
    const State before = whole_state();
    stage::use_opengl(stage::silent_opengl());

    stage::Result<stage::Texture> texture = stage::make_texture({1, 1, stage::kPictureLuminance, {255}});
    ASSERT_TRUE(texture);
    stage::PassSettings settings;
    settings.texture = texture->number();
    settings.blend = stage::PassBlend::kAdditive;
    State inside;
    const auto complaints = stage::draw_pass(settings, [&](int32_t, float) {
        change_everything();
        inside = whole_state();
    });

    EXPECT_THAT(complaints, IsEmpty());
    EXPECT_EQ(before, whole_state());
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

TEST_F(PassTest, ShowsTheDrawingTheStateItAsksFor) {
    stage::PassSettings settings;
    for (size_t i = 0; i < 16; ++i) {
        settings.projection_view[i] = static_cast<float>(i);
        settings.world[i] = static_cast<float>(100 + i);
    }
    settings.color = {0.25f, 0.5f, 0.75f, 1.0f};
    settings.alpha_reference = 0.25f;
    settings.opacity = 0.5f;
    settings.render_flags = 3;
    stage::draw_pass(settings, [&](int32_t render_flags, float opacity) {
        EXPECT_EQ(3, render_flags);
        EXPECT_EQ(0.5f, opacity);
        State state = whole_state();
        for (size_t i = 0; i < 16; ++i) {
            EXPECT_EQ(settings.projection_view[i], state["GL_PROJECTION_MATRIX"][i]);
            EXPECT_EQ(settings.world[i], state["GL_MODELVIEW_MATRIX"][i]);
        }
        EXPECT_NEAR(1.0, state["GL_TEXTURE_MATRIX"][0] * 32767, 1e-6);
        EXPECT_NEAR(1.0, state["GL_TEXTURE_MATRIX"][5] * 32767, 1e-6);
        EXPECT_THAT(state["GL_MATRIX_MODE"], ElementsAre(GL_MODELVIEW));
        EXPECT_THAT(state["GL_BLEND_SRC_RGB"], ElementsAre(GL_SRC_ALPHA));
        EXPECT_THAT(state["GL_BLEND_DST_RGB"], ElementsAre(GL_ONE_MINUS_SRC_ALPHA));
        EXPECT_THAT(state["GL_BLEND_SRC_ALPHA"], ElementsAre(GL_ONE));
        EXPECT_THAT(state["GL_BLEND_DST_ALPHA"], ElementsAre(GL_ONE_MINUS_SRC_ALPHA));
        EXPECT_THAT(state["GL_ALPHA_TEST_FUNC"], ElementsAre(GL_GREATER));
        EXPECT_NEAR(0.25, state["GL_ALPHA_TEST_REF"][0], 1e-6);
        EXPECT_THAT(state["GL_CURRENT_COLOR"], ElementsAre(0.25, 0.5, 0.75, 1.0));
        EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    });
}

struct FaultCase {
    const char* name;
    void (*draw)();
    const char* complaint;  // a part of the only one
};

const FaultCase kFaultCases[] = {
    {"AnOpenBegin", [] { ormixGL_glBegin(GL_QUADS); }, "glBegin was left without its glEnd"},
    {"APushTooMany",
     [] {
         ormixGL_glPushMatrix();
         ormixGL_glPushMatrix();
     },
     "2 glPushMatrix on GL_MODELVIEW without glPopMatrix"},
    {"APushOnAnotherStack",
     [] {
         ormixGL_glMatrixMode(GL_PROJECTION);
         ormixGL_glPushMatrix();
     },
     "1 glPushMatrix on GL_PROJECTION without glPopMatrix"},
    {"APopTooMany", [] { ormixGL_glPopMatrix(); }, "glPopMatrix(): matrix stack underflow"},
    {"AWrongConstant", [] { ormixGL_glEnable(0x1234); }, "glEnable(4660): invalid enumerant"},
    {"AWrongValue", [] { ormixGL_glLineWidth(-1); }, "glLineWidth(-1): invalid value"},
    {"AMatrixCallBetweenBeginAndEnd",
     [] {
         ormixGL_glBegin(GL_QUADS);
         ormixGL_glLoadIdentity();
         ormixGL_glEnd();
     },
     "glEnd(): invalid operation"},
};

class PassFaults : public PassTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(PassFaults, AreNamedAndUndone) {
    const State before = whole_state();
    stage::PassSettings settings;
    settings.check_every_call = true;
    const auto complaints = stage::draw_pass(settings, [](int32_t, float) { GetParam().draw(); });
    EXPECT_THAT(complaints, ElementsAre(testing::HasSubstr(GetParam().complaint)));
    EXPECT_EQ(before, whole_state());
    EXPECT_EQ(GLenum{GL_NO_ERROR}, glGetError());

    settings.check_every_call = false;
    EXPECT_EQ(1u, stage::draw_pass(settings, [](int32_t, float) { GetParam().draw(); }).size());
    EXPECT_EQ(before, whole_state());
}

TEST_F(PassTest, NamesAPopBelowTheCallersMatrices) {
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glTranslatef(1, 2, 3);
    const State before = whole_state();
    EXPECT_THAT(stage::draw_pass({}, [](int32_t, float) { ormixGL_glPopMatrix(); }),
                ElementsAre("1 glPopMatrix on GL_MODELVIEW without glPushMatrix"));
    EXPECT_EQ(before, whole_state());
    glPopMatrix();
    glLoadIdentity();
}

INSTANTIATE_TEST_SUITE_P(Cases, PassFaults, testing::ValuesIn(kFaultCases),
                         [](const auto& row) { return row.param.name; });

}  // namespace
