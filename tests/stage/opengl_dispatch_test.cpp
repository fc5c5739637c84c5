// Where the exported OpenGL services send their calls.
#include <gmock/gmock.h>
#include <tovu/opengl.h>

#include "stage/call_log.h"
#include "stage/opengl/recording_opengl.h"

namespace {

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
};

constexpr float kNumbers[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

/// Functions whose arguments differ in kind, and what is written down of them: addresses of arrays are left out.
const std::pair<void (*)(), const char*> kCalls[] = {
    {[] { ormixGL_glEnd(); }, "glEnd()"},
    {[] { ormixGL_glVertex3fv(kNumbers); }, "glVertex3fv(1, 2, 3)"},
    {[] { ormixGL_glColor4ub(1, 2, 3, 255); }, "glColor4ub(1, 2, 3, 255)"},
    {[] { ormixGL_glTexCoord2s(-1, 32767); }, "glTexCoord2s(-1, 32767)"},
    {[] { ormixGL_glVertexPointer(3, GL_FLOAT, 12, kNumbers); }, "glVertexPointer(3, 5126, 12)"},
    {[] { ormixGL_glMultMatrixf(kNumbers); }, "glMultMatrixf(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16)"},
};

TEST_F(Dispatch, CallsAreRecordedUnlessItIsSilent) {
    for (const auto& [call, text] : kCalls) {
        stage::start_recording_calls();
        call();
        ASSERT_EQ(stage::recorded_calls().size(), 1u) << text;
        EXPECT_EQ(stage::to_string(stage::recorded_calls()[0]), text);
    }
    stage::use_opengl(stage::silent_opengl());
    stage::start_recording_calls();
    for (const auto& [call, text] : kCalls) call();
    EXPECT_THAT(stage::recorded_calls(), IsEmpty());
}

TEST_F(Dispatch, ADrawKeepsWhatTheArraysHeldThen) {
    float vertices[] = {9, 9, 9, 1, 2, 3, 4, 5, 6};
    unsigned char colors[][5] = {{0, 0, 0, 0, 9}, {10, 20, 30, 40, 9}, {50, 60, 70, 255, 9}};
    short texcoords[] = {0, 0, -1, 32767, 5, 6};
    ormixGL_glVertexPointer(3, GL_FLOAT, 0, vertices);
    ormixGL_glColorPointer(4, GL_UNSIGNED_BYTE, 5, colors);
    ormixGL_glTexCoordPointer(2, GL_SHORT, 0, texcoords);
    for (const unsigned int array :
         std::initializer_list<unsigned>{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY})
        ormixGL_glEnableClientState(array);
    ormixGL_glDrawArrays(GL_QUADS, 1, 2);
    ormixGL_glDisableClientState(GL_COLOR_ARRAY);
    std::ranges::fill(vertices, 0.0f);
    ormixGL_glDrawArrays(GL_LINES, 0, 1);
    stage::stop_recording_calls();
    ormixGL_glDrawArrays(GL_QUADS, 0, 3);

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
}

}  // namespace
