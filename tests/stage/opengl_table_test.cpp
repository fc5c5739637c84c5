// The function tables that receive the calls of the exported OpenGL services.
#include <gmock/gmock.h>
#include <tovu/opengl.h>

#include "stage/call_log.h"
#include "stage/opengl_table/recording_opengl.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Records of single calls are tested by the scenarios.
TEST(Dispatch, ADrawRecordsTheArraysAtItsTime) {
    stage::use_opengl(stage::recording_opengl());
    stage::start_recording_calls();
    stage::forget_recorded_draws();
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
    stage::use_opengl(stage::silent_opengl());

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

    stage::start_recording_calls();
    ormixGL_glEnd();
    EXPECT_THAT(stage::recorded_calls(), IsEmpty()) << "silent";
    stage::stop_recording_calls();
}

}  // namespace
