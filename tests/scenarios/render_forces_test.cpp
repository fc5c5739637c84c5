// The force display, call by call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "render_host.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAreArray;
using testing::IsEmpty;

void add(Log& log, const Log& more) {
    log.insert(log.end(), more.begin(), more.end());
}

std::string vertex(float x, float y, float z) {
    return logged("glVertex3f", x, y, z);
}

/// A line from the origin to v with a large point at each end.
Log vector_drawn(float red, float green, float blue, Vector3 v) {
    return {logged("glColor4f", red, green, blue, 1.0f),
            logged("glBegin", GL_LINES),
            vertex(0, 0, 0),
            vertex(v.x, v.y, v.z),
            logged("glEnd"),
            logged("glHint", GL_POINT_SMOOTH_HINT, GL_NICEST),
            logged("glPointSize", 7.0f),
            logged("glBegin", GL_POINTS),
            vertex(0, 0, 0),
            vertex(v.x, v.y, v.z),
            logged("glEnd")};
}

/// Twelve edges, those along z first, then y, then x; among them x, y, z count up like binary digits.
Log cube_drawn(float hx, float hy, float hz) {
    Log log = {logged("glColor4f", 0.2f, 0.2f, 0.7f, 1.0f), logged("glBegin", GL_LINES)};
    const float ends[2] = {-1, 1};
    for (float y : ends)
        for (float x : ends) add(log, {vertex(x * hx, y * hy, -hz), vertex(x * hx, y * hy, hz)});
    for (float z : ends)
        for (float x : ends) add(log, {vertex(x * hx, -hy, z * hz), vertex(x * hx, hy, z * hz)});
    for (float y : ends)
        for (float z : ends) add(log, {vertex(-hx, y * hy, z * hz), vertex(hx, y * hy, z * hz)});
    log.push_back(logged("glEnd"));
    return log;
}

const Log kBefore = {logged("glDisable", GL_TEXTURE_2D), logged("glLineWidth", 2.0f)};
const Log kAfter = {logged("glLineWidth", 1.0f)};
const stage::ParameterValues kForces = {{"show_forces", true},    {"billboard", "None"},   {"disable_depth", false},
                                        {"gravity", 9.81},        {"wind_force", 4.0},     {"initial_speed", 0.0},
                                        {"opening_angle_x", 0.0}, {"opening_angle_z", 0.0}};

stage::ParameterValues forces_with(const stage::ParameterValues& more) {
    stage::ParameterValues values = kForces;
    values.insert(values.end(), more.begin(), more.end());
    return values;
}

/// What comes after the quads.
Log force_calls(const Log& pass) {
    const auto quads = std::find(pass.begin(), pass.end(), logged("glDisableClientState", GL_TEXTURE_COORD_ARRAY));
    return quads == pass.end() ? Log{"no quads"} : Log(quads + 1, pass.end());
}

const std::string kAsked = logged("_api__pellor_get_is_on_air");

TEST(ForceDisplay, LocalWithCube) {
    RenderHost host;
    const SmokeHandle smoke =
        host.smoke_of(0, forces_with({{"spawn_range_x", 10.0}, {"spawn_range_y", 20.0}, {"spawn_range_z", 30.0}}));
    host.block(smoke).emission_vector = {1, 2, 3};
    Log expected = {kAsked};
    add(expected, kBefore);
    add(expected, vector_drawn(0.2f, 0.7f, 0.7f, {0, -9.81f * 10.0f, 0}));
    add(expected, vector_drawn(0.7f, 0.7f, 0.2f, {4, 0, 0}));
    add(expected, vector_drawn(0.7f, 0.2f, 0.7f, {1, 2, 3}));
    add(expected, cube_drawn(5, 10, 15));
    add(expected, kAfter);
    EXPECT_THAT(force_calls(host.pass(smoke)), ElementsAreArray(expected));
}

TEST(ForceDisplay, WorldFromTheContainersPosition) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(
        0, forces_with({{"reference", "World"}, {"spawn_range_y", 8.0}, {"initial_align_to_spawn_center", true}}));
    host.container(smoke).placement.position = {7, 8, 9};
    host.container(smoke).placement.scale = {3, 2, 1};
    host.run_frames(1);
    const float* m = host.block(smoke).rotation_scale_matrix.m;
    Log expected = {kAsked, logged("glPushMatrix"), logged("glLoadIdentity"), logged("glTranslatef", 7.0f, 8.0f, 9.0f)};
    add(expected, kBefore);
    add(expected, vector_drawn(0.2f, 0.7f, 0.7f, {0, -9.81f * 2.0f * 10.0f, 0}));
    add(expected, vector_drawn(0.7f, 0.7f, 0.2f, {4.0f * 3.0f, 0, 0}));
    add(expected, {logged("glMultMatrixf", m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11],
                          m[12], m[13], m[14], m[15])});
    add(expected, cube_drawn(0, 4, 0));
    add(expected, kAfter);
    add(expected, {logged("glPopMatrix")});
    EXPECT_THAT(force_calls(host.pass(smoke)), ElementsAreArray(expected));
}

struct NoCubeCase {
    const char* name;
    stage::ParameterValues values;
};

TEST(ForceDisplay, CubeOnlyWhereBirthsFillOne) {
    const NoCubeCase cases[] = {{"no range", {}}, {"not a cube", {{"spawn_type", "Sphere"}, {"spawn_range_x", 10.0}}}};
    for (const NoCubeCase& row : cases) {
        RenderHost host;
        const SmokeHandle smoke = host.smoke_of(0, forces_with(row.values));
        const Log calls = force_calls(host.pass(smoke));
        EXPECT_EQ(3, std::count(calls.begin(), calls.end(), logged("glBegin", GL_LINES))) << row.name;
        EXPECT_EQ(logged("glLineWidth", 1.0f), calls.back()) << row.name;
    }
}

TEST(ForceDisplay, NotOnAirAndNotInAReducedPass) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(0, kForces);
    EXPECT_THAT(force_calls(host.pass(smoke, 1)), IsEmpty());
    host.stage().clock.on_air = true;
    EXPECT_THAT(force_calls(host.pass(smoke)), ElementsAreArray(Log{kAsked}));
    host.set(smoke, "show_forces", false);
    EXPECT_THAT(force_calls(host.pass(smoke)), IsEmpty());
}

}  // namespace
}  // namespace tovu
