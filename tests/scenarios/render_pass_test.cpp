// The state that a pass sets, and the order in which it sets it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "render_host.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAreArray;

Log operator+(Log a, const Log& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const Log kWarmUp = {logged("glEnableClientState", GL_COLOR_ARRAY),
                     logged("glEnableClientState", GL_TEXTURE_COORD_ARRAY),
                     logged("glEnableClientState", GL_VERTEX_ARRAY), logged("glDisableClientState", GL_NORMAL_ARRAY)};
const Log kEveryPass = {logged("glEnableClientState", GL_COLOR_ARRAY)};
const Log kDepthOff = {logged("glDepthMask", GL_FALSE)};
const Log kFullState = {logged("glDisable", GL_LIGHTING), logged("glEnable", GL_BLEND),
                        logged("glEnable", GL_ALPHA_TEST)};
const Log kEmptyQuads = {logged("glBegin", GL_QUADS), logged("glEnd")};
const Log kEmptyArrays = {logged("glVertexPointer", 3, GL_FLOAT, 0), logged("glTexCoordPointer", 2, GL_SHORT, 0),
                          logged("glColorPointer", 4, GL_UNSIGNED_BYTE, 0), logged("glDrawArrays", GL_QUADS, 0, 0)};
const Log kArraysOff = {logged("glDisableClientState", GL_COLOR_ARRAY),
                        logged("glDisableClientState", GL_VERTEX_ARRAY)};
const Log kTexcoordsOff = {logged("glDisableClientState", GL_TEXTURE_COORD_ARRAY)};
const Log kDepthOn = {logged("glDepthMask", GL_TRUE)};
const Log kPushIdentity = {logged("glMatrixMode", GL_MODELVIEW), logged("glPushMatrix"), logged("glLoadIdentity")};
const Log kPop = {logged("glPopMatrix")};

/// The OpenGL calls alone.
Log opengl_calls(const Log& log) {
    Log calls;
    for (const std::string& call : log)
        if (call.starts_with("gl")) calls.push_back(call);
    return calls;
}

struct PassCase {
    const char* name;
    stage::ParameterValues values;
    int passes_before;
    int32_t render_flags;
    Log expected;
};

class RenderPass : public testing::TestWithParam<PassCase> {};

TEST_P(RenderPass, CallsOpenGlInOrder) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(0, GetParam().values);
    for (int i = 0; i < GetParam().passes_before; ++i) host.render(smoke);
    EXPECT_THAT(opengl_calls(host.pass(smoke, GetParam().render_flags)), ElementsAreArray(GetParam().expected));
}

const stage::ParameterValues kFlat = {{"billboard", "None"}};
const stage::ParameterValues kFlatDepth = {{"billboard", "None"}, {"disable_depth", false}};
const stage::ParameterValues kArrays = {{"billboard", "None"}, {"use_array", true}};
const PassCase kPassCases[] = {
    {"first pass", kFlat, 0, 0,
     kWarmUp + kEveryPass + kDepthOff + kFullState + kEmptyQuads + kArraysOff + kTexcoordsOff + kDepthOn},
    {"ninth pass still warms up and tidies", kFlat, 8, 0,
     kWarmUp + kEveryPass + kDepthOff + kFullState + kEmptyQuads + kArraysOff + kTexcoordsOff + kDepthOn},
    {"tenth pass leaves the arrays on", kFlat, 9, 0,
     kWarmUp + kEveryPass + kDepthOff + kFullState + kEmptyQuads + kTexcoordsOff + kDepthOn},
    {"from the eleventh pass on", kFlat, 10, 0,
     kEveryPass + kDepthOff + kFullState + kEmptyQuads + kTexcoordsOff + kDepthOn},
    {"use array at any time", kArrays, 15, 0,
     kWarmUp + kEveryPass + kDepthOff + kFullState + kEmptyArrays + kArraysOff + kTexcoordsOff + kDepthOn},
    {"reduced pass sets the depth mask at the end only", kFlat, 10, 1,
     kEveryPass + kEmptyQuads + kTexcoordsOff + kDepthOn},
    {"flags 2 is a full pass", kFlat, 10, 2,
     kEveryPass + kDepthOff + kFullState + kEmptyQuads + kTexcoordsOff + kDepthOn},
    {"flags 3 is a reduced pass", kFlat, 10, 3, kEveryPass + kEmptyQuads + kTexcoordsOff + kDepthOn},
    {"depth writes stay", kFlatDepth, 10, 0, kEveryPass + kFullState + kEmptyQuads + kTexcoordsOff},
    {"reduced with depth writes", kFlatDepth, 10, 1, kEveryPass + kEmptyQuads + kTexcoordsOff},
    {"world billboards under the identity",
     {{"reference", "World"}, {"disable_depth", false}},
     10,
     1,
     kEveryPass + kPushIdentity + kEmptyQuads + kPop + kTexcoordsOff},
    {"local billboards under the identity",
     {{"disable_depth", false}},
     10,
     1,
     kEveryPass + kPushIdentity + kEmptyQuads + kPop + kTexcoordsOff},
    {"flat world arrays under the identity",
     {{"reference", "World"}, {"billboard", "None"}, {"disable_depth", false}, {"use_array", true}},
     10,
     1,
     kWarmUp + kEveryPass + kPushIdentity + kEmptyArrays + kPop + kArraysOff + kTexcoordsOff},
};

INSTANTIATE_TEST_SUITE_P(States, RenderPass, testing::ValuesIn(kPassCases), [](const auto& case_info) {
    std::string name = case_info.param.name;
    for (char& c : name)
        if (c == ' ') c = '_';
    return name;
});

TEST(RenderPassFlags, CountPassesWithArraysBelowZero) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(0, kArrays);
    EXPECT_EQ(10, host.block(smoke).array_warmup_frames);
    for (int i = 0; i < 12; ++i) host.render(smoke);
    EXPECT_EQ(-2, host.block(smoke).array_warmup_frames);
    host.set(smoke, "use_array", false);
    host.render(smoke);
    EXPECT_EQ(-2, host.block(smoke).array_warmup_frames);
}

}  // namespace
}  // namespace tovu
