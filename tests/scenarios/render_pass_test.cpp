// The state that a pass sets, and the order in which it sets it.
#include <gmock/gmock.h>

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
const Log kBegin = {logged("glEnableClientState", GL_COLOR_ARRAY)};
const Log kDepthOff = {logged("glDepthMask", GL_FALSE)};
const Log kFullState = {logged("glDisable", GL_LIGHTING), logged("glEnable", GL_BLEND),
                        logged("glEnable", GL_ALPHA_TEST)};
const Log kQuads = {logged("glBegin", GL_QUADS), logged("glEnd")};
const Log kArrays = {logged("glVertexPointer", 3, GL_FLOAT, 0), logged("glTexCoordPointer", 2, GL_SHORT, 0),
                     logged("glColorPointer", 4, GL_UNSIGNED_BYTE, 0), logged("glDrawArrays", GL_QUADS, 0, 0)};
const Log kArraysOff = {logged("glDisableClientState", GL_COLOR_ARRAY),
                        logged("glDisableClientState", GL_VERTEX_ARRAY)};
const Log kEnd = {logged("glDisableClientState", GL_TEXTURE_COORD_ARRAY)};
const Log kDepthOn = {logged("glDepthMask", GL_TRUE)};
const Log kPush = {logged("glMatrixMode", GL_MODELVIEW), logged("glPushMatrix"), logged("glLoadIdentity")};
const Log kPop = {logged("glPopMatrix")};

struct PassCase {
    const char* name;
    stage::ParameterValues values;
    int passes_before;
    int32_t render_flags;
    Log expected;
};
const stage::ParameterValues kDepth = {{"disable_depth", false}};
const stage::ParameterValues kUseArray = {{"use_array", true}};
const Log kWarmingUp = kWarmUp + kBegin + kDepthOff + kFullState + kQuads + kArraysOff + kEnd + kDepthOn;
const Log kUsual = kBegin + kDepthOff + kFullState + kQuads + kEnd + kDepthOn;
const Log kUnderIdentity = kBegin + kPush + kQuads + kPop + kEnd;
const PassCase kPassCases[] = {
    {"first pass", {}, 0, 0, kWarmingUp},
    {"the ninth pass still disables the arrays", {}, 8, 0, kWarmingUp},
    {"the tenth pass leaves the arrays enabled", {}, 9, 0, kWarmUp + kUsual},
    {"from the eleventh pass on", {}, 10, 0, kUsual},
    {"use array at any time", kUseArray, 15, 0,
     kWarmUp + kBegin + kDepthOff + kFullState + kArrays + kArraysOff + kEnd + kDepthOn},
    {"reduced pass sets the depth mask at the end only", {}, 10, 1, kBegin + kQuads + kEnd + kDepthOn},
    {"flags 2 is a full pass", {}, 10, 2, kUsual},
    {"flags 3 is a reduced pass", {}, 10, 3, kBegin + kQuads + kEnd + kDepthOn},
    {"depth writes stay enabled", kDepth, 10, 0, kBegin + kFullState + kQuads + kEnd},
    {"reduced with depth writes", kDepth, 10, 1, kBegin + kQuads + kEnd},
    {"world billboards under the identity", with(kDepth, {{"reference", "World"}, {"billboard", "Particle"}}), 10, 1,
     kUnderIdentity},
    {"local billboards under the identity", with(kDepth, {{"billboard", "Particle"}}), 10, 1, kUnderIdentity},
    {"flat world arrays under the identity", with(kDepth, {{"reference", "World"}, {"use_array", true}}), 10, 1,
     kWarmUp + kBegin + kPush + kArrays + kPop + kArraysOff + kEnd},
};

TEST(RenderPass, CallsOpenGlInOrder) {
    for (const PassCase& row : kPassCases) {
        RenderHost host;
        const SmokeHandle smoke = host.smoke_of(0, with({{"billboard", "None"}}, row.values));
        for (int i = 0; i < row.passes_before; ++i) host.render(smoke);
        Log calls = host.pass(smoke, row.render_flags);
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("gl"); });
        EXPECT_THAT(calls, ElementsAreArray(row.expected)) << row.name;
    }
}

}  // namespace
}  // namespace tovu
