// Where the exported OpenGL services send their calls.
#include <gmock/gmock.h>

#include "Plugins/Geom/TovuSmoke/host/opengl.h"
#include "stage/call_log.h"
#include "stage/opengl/dispatch.h"

namespace {

using Constants = std::initializer_list<unsigned int>;

using testing::ElementsAre;
using testing::IsEmpty;

class Dispatch : public testing::Test {
  protected:
    void SetUp() override {
        stage::use_opengl(stage::recording_opengl());
        stage::start_recording_calls();
        stage::forget_recorded_draws();
    }
    void TearDown() override {
        stage::stop_recording_calls();
        stage::use_opengl(stage::silent_opengl());
    }

    static std::vector<std::string> log() {
        std::vector<std::string> lines;
        for (const stage::Call& call : stage::recorded_calls()) lines.push_back(stage::to_string(call));
        return lines;
    }
};

/// Calls every function of the contract once, in the contract's order.
void call_all() {
    const float numbers[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    ormixGL_glBegin(7);
    ormixGL_glEnd();
    ormixGL_glVertex3f(1, 2, 3);
    ormixGL_glVertex3fv(numbers);
    ormixGL_glColor4f(0.25f, 0.5f, 0.75f, 1);
    ormixGL_glColor4ub(1, 2, 3, 255);
    ormixGL_glTexCoord2s(-1, 32767);
    ormixGL_glVertexPointer(3, GL_FLOAT, 12, numbers);
    ormixGL_glColorPointer(4, GL_UNSIGNED_BYTE, 4, numbers);
    ormixGL_glTexCoordPointer(2, GL_SHORT, 4, numbers);
    ormixGL_glDrawArrays(7, 0, 0);
    ormixGL_glEnableClientState(1);
    ormixGL_glDisableClientState(2);
    ormixGL_glEnable(3);
    ormixGL_glDisable(4);
    ormixGL_glDepthMask(1);
    ormixGL_glHint(5, 6);
    ormixGL_glLineWidth(2);
    ormixGL_glPointSize(7);
    ormixGL_glMatrixMode(8);
    ormixGL_glLoadIdentity();
    ormixGL_glPushMatrix();
    ormixGL_glPopMatrix();
    ormixGL_glMultMatrixf(numbers);
    ormixGL_glTranslatef(1, 2, 3);
}

TEST_F(Dispatch, EveryFunctionIsRecordedWithItsNumbersInOrder) {
    call_all();
    EXPECT_THAT(
        log(),
        ElementsAre("glBegin(7)", "glEnd()", "glVertex3f(1, 2, 3)", "glVertex3fv(1, 2, 3)",
                    "glColor4f(0.25, 0.5, 0.75, 1)", "glColor4ub(1, 2, 3, 255)", "glTexCoord2s(-1, 32767)",
                    "glVertexPointer(3, 5126, 12)", "glColorPointer(4, 5121, 4)", "glTexCoordPointer(2, 5122, 4)",
                    "glDrawArrays(7, 0, 0)", "glEnableClientState(1)", "glDisableClientState(2)", "glEnable(3)",
                    "glDisable(4)", "glDepthMask(1)", "glHint(5, 6)", "glLineWidth(2)", "glPointSize(7)",
                    "glMatrixMode(8)", "glLoadIdentity()", "glPushMatrix()", "glPopMatrix()",
                    "glMultMatrixf(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16)", "glTranslatef(1, 2, 3)"));
}

TEST_F(Dispatch, TheSilentOneTellsNobody) {
    stage::use_opengl(stage::silent_opengl());
    call_all();
    EXPECT_THAT(log(), IsEmpty());
}

TEST_F(Dispatch, ADrawKeepsWhatTheArraysHeldThen) {
    float vertices[] = {9, 9, 9, 1, 2, 3, 4, 5, 6};
    unsigned char colors[][5] = {{0, 0, 0, 0, 9}, {10, 20, 30, 40, 9}, {50, 60, 70, 255, 9}};
    short texcoords[] = {0, 0, -1, 32767, 5, 6};
    ormixGL_glVertexPointer(3, GL_FLOAT, 0, vertices);
    ormixGL_glColorPointer(4, GL_UNSIGNED_BYTE, 5, colors);
    ormixGL_glTexCoordPointer(2, GL_SHORT, 0, texcoords);
    for (const unsigned int array : Constants{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        ormixGL_glEnableClientState(array);
    ormixGL_glDrawArrays(GL_QUADS, 1, 2);
    ormixGL_glDisableClientState(GL_COLOR_ARRAY);
    std::ranges::fill(vertices, 0.0f);
    ormixGL_glDrawArrays(GL_LINES, 0, 1);

    ASSERT_EQ(2u, stage::recorded_draws().size());
    const stage::RecordedDraw& first = stage::recorded_draws()[0];
    EXPECT_EQ("glDrawArrays(7, 1, 2)", stage::to_string(stage::recorded_calls()[first.call_index]));
    EXPECT_THAT(first.vertices.values, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(first.colors.values, ElementsAre(10, 20, 30, 40, 50, 60, 70, 255));
    EXPECT_THAT(first.texcoords.values, ElementsAre(-1, 32767, 5, 6));
    EXPECT_EQ(4, first.colors.size);
    const stage::RecordedDraw& second = stage::recorded_draws()[1];
    EXPECT_THAT(second.vertices.values, ElementsAre(0, 0, 0));
    EXPECT_EQ(0, second.colors.size) << "not enabled";
    EXPECT_THAT(second.colors.values, IsEmpty());

    stage::stop_recording_calls();
    ormixGL_glDrawArrays(GL_QUADS, 0, 3);
    EXPECT_EQ(2u, stage::recorded_draws().size());
}

}  // namespace
