// The force display, call by call.
#include <gmock/gmock.h>

#include "render_host.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAreArray;
using testing::IsEmpty;

Log operator+(Log a, const Log& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::string vertex(float x, float y, float z) {
    return logged("glVertex3f", x, y, z);
}

/// A line from the origin to v with a large point at each end.
Log vector_drawn(float red, float green, float blue, Vector3 v) {
    const Log ends = {vertex(0, 0, 0), vertex(v.x, v.y, v.z), logged("glEnd")};
    return Log{logged("glColor4f", red, green, blue, 1.0f), logged("glBegin", GL_LINES)} + ends +
           Log{logged("glHint", GL_POINT_SMOOTH_HINT, GL_NICEST), logged("glPointSize", 7.0f),
               logged("glBegin", GL_POINTS)} +
           ends;
}

/// Twelve edges: four along z, then four along y, then four along x, each in ascending order.
Log cube_drawn(float hx, float hy, float hz) {
    Log log = {logged("glColor4f", 0.2f, 0.2f, 0.7f, 1.0f), logged("glBegin", GL_LINES)};
    const float ends[2] = {-1, 1};
    for (float y : ends)
        for (float x : ends) log = log + Log{vertex(x * hx, y * hy, -hz), vertex(x * hx, y * hy, hz)};
    for (float z : ends)
        for (float x : ends) log = log + Log{vertex(x * hx, -hy, z * hz), vertex(x * hx, hy, z * hz)};
    for (float y : ends)
        for (float z : ends) log = log + Log{vertex(-hx, y * hy, z * hz), vertex(hx, y * hy, z * hz)};
    return log + Log{logged("glEnd")};
}

const Log kAsked = {logged("_api__pellor_get_is_on_air")};
const Log kBefore = {logged("glDisable", GL_TEXTURE_2D), logged("glLineWidth", 2.0f)};
const Log kAfter = {logged("glLineWidth", 1.0f)};
const stage::ParameterValues kForces = {{"show_forces", true},    {"billboard", "None"},   {"disable_depth", false},
                                        {"gravity", 9.81},        {"wind_force", 4.0},     {"initial_speed", 0.0},
                                        {"opening_angle_x", 0.0}, {"opening_angle_z", 0.0}};

/// The calls after the quads.
Log force_calls(const Log& pass) {
    const auto quads = std::find(pass.begin(), pass.end(), logged("glDisableClientState", GL_TEXTURE_COORD_ARRAY));
    return quads == pass.end() ? Log{"no quads"} : Log(quads + 1, pass.end());
}

TEST(ForceDisplay, LocalWithCube) {
    RenderHost host;
    const SmokeHandle smoke =
        host.smoke_of(0, with(kForces, {{"spawn_range_x", 10.0}, {"spawn_range_y", 20.0}, {"spawn_range_z", 30.0}}));
    host.block(smoke).emission_vector = {1, 2, 3};
    EXPECT_THAT(force_calls(host.pass(smoke)),
                ElementsAreArray(kAsked + kBefore + vector_drawn(0.2f, 0.7f, 0.7f, {0, -9.81f * 10.0f, 0}) +
                                 vector_drawn(0.7f, 0.7f, 0.2f, {4, 0, 0}) + vector_drawn(0.7f, 0.2f, 0.7f, {1, 2, 3}) +
                                 cube_drawn(5, 10, 15) + kAfter));
}

TEST(ForceDisplay, WorldFromTheContainersPosition) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(
        0, with(kForces, {{"reference", "World"}, {"spawn_range_y", 8.0}, {"initial_align_to_spawn_center", true}}));
    host.container(smoke).placement.position = {7, 8, 9};
    host.container(smoke).placement.scale = {3, 2, 1};
    host.run_frames(1);
    const Log moved = {logged("glPushMatrix"), logged("glLoadIdentity"), logged("glTranslatef", 7.0f, 8.0f, 9.0f)};
    const Log scaled = {logged("glMultMatrixf", 3, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)};
    EXPECT_THAT(
        force_calls(host.pass(smoke)),
        ElementsAreArray(kAsked + moved + kBefore + vector_drawn(0.2f, 0.7f, 0.7f, {0, -9.81f * 2.0f * 10.0f, 0}) +
                         vector_drawn(0.7f, 0.7f, 0.2f, {4.0f * 3.0f, 0, 0}) + scaled + cube_drawn(0, 4, 0) + kAfter +
                         Log{logged("glPopMatrix")}));
}

TEST(ForceDisplay, CubeOnlyForACubeOfSomeExtent) {
    for (const stage::ParameterValues& values :
         {stage::ParameterValues{}, {{"spawn_type", "Sphere"}, {"spawn_range_x", 10.0}}}) {
        RenderHost host;
        const Log calls = force_calls(host.pass(host.smoke_of(0, with(kForces, values))));
        EXPECT_EQ(3, std::count(calls.begin(), calls.end(), logged("glBegin", GL_LINES))) << values.size();
    }
}

TEST(ForceDisplay, NotOnAirAndNotInAReducedPass) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(0, kForces);
    EXPECT_THAT(force_calls(host.pass(smoke, 1)), IsEmpty());
    host.stage().clock.on_air = true;
    EXPECT_THAT(force_calls(host.pass(smoke)), ElementsAreArray(kAsked));
    host.set(smoke, "show_forces", false);
    EXPECT_THAT(force_calls(host.pass(smoke)), IsEmpty());
}

}  // namespace
}  // namespace tovu
