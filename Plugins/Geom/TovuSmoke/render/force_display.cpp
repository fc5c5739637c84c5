#include "force_display.h"

#include "../host/opengl.h"
#include "../particles/step_values.h"

namespace tovu {
namespace {

constexpr float kGravityMagnification = 10.0f;  // at its own length gravity is too short to see

void draw_line(Vector3 from, Vector3 to) {
    ormixGL_glVertex3f(from.x, from.y, from.z);
    ormixGL_glVertex3f(to.x, to.y, to.z);
}

/// A line from the origin to `v` with a point at each end, in the current colour.
void draw_vector(Vector3 v) {
    ormixGL_glBegin(GL_LINES);
    draw_line({0, 0, 0}, v);
    ormixGL_glEnd();
    ormixGL_glHint(GL_POINT_SMOOTH_HINT, GL_NICEST);
    ormixGL_glPointSize(7.0f);
    ormixGL_glBegin(GL_POINTS);
    draw_line({0, 0, 0}, v);
    ormixGL_glEnd();
}

/// The twelve edges of the box with the half extents `h`: four along z, four along y, four along x.
void draw_box(Vector3 h) {
    ormixGL_glBegin(GL_LINES);
    draw_line({-h.x, -h.y, -h.z}, {-h.x, -h.y, +h.z});
    draw_line({+h.x, -h.y, -h.z}, {+h.x, -h.y, +h.z});
    draw_line({-h.x, +h.y, -h.z}, {-h.x, +h.y, +h.z});
    draw_line({+h.x, +h.y, -h.z}, {+h.x, +h.y, +h.z});

    draw_line({-h.x, -h.y, -h.z}, {-h.x, +h.y, -h.z});
    draw_line({+h.x, -h.y, -h.z}, {+h.x, +h.y, -h.z});
    draw_line({-h.x, -h.y, +h.z}, {-h.x, +h.y, +h.z});
    draw_line({+h.x, -h.y, +h.z}, {+h.x, +h.y, +h.z});

    draw_line({-h.x, -h.y, -h.z}, {+h.x, -h.y, -h.z});
    draw_line({-h.x, -h.y, +h.z}, {+h.x, -h.y, +h.z});
    draw_line({-h.x, +h.y, -h.z}, {+h.x, +h.y, -h.z});
    draw_line({-h.x, +h.y, +h.z}, {+h.x, +h.y, +h.z});
    ormixGL_glEnd();
}

void draw_spawn_cube(const ParameterSlots& parameters) {
    const Vector3 range{param::spawn_range_x(parameters), param::spawn_range_y(parameters),
                        param::spawn_range_z(parameters)};
    if (param::spawn_type(parameters) != kSpawnCube) return;
    if (range.x == 0.0f && range.y == 0.0f && range.z == 0.0f) return;
    ormixGL_glColor4f(0.2f, 0.2f, 0.7f, 1.0f);
    draw_box({range.x / 2.0f, range.y / 2.0f, range.z / 2.0f});
}

}  // namespace

void draw_force_display(const SmokeInstance& instance) {
    const ParameterSlots& parameters = instance.parameters;
    const bool world = param::reference(parameters) == kReferenceWorld;

    // Under Reference World the forces act along the world's axes: they are drawn there, from the container's position.
    float gravity = param::gravity(parameters);
    if (world) {
        ormixGL_glPushMatrix();
        ormixGL_glLoadIdentity();
        ormixGL_glTranslatef(instance.abs_position.x, instance.abs_position.y, instance.abs_position.z);
        gravity *= instance.abs_scale.y;
    }
    const Vector3 wind = global_wind(instance);

    ormixGL_glDisable(GL_TEXTURE_2D);
    ormixGL_glLineWidth(2.0f);
    ormixGL_glColor4f(0.2f, 0.7f, 0.7f, 1.0f);
    draw_vector(Vector3{0, -gravity, 0} * kGravityMagnification);
    ormixGL_glColor4f(0.7f, 0.7f, 0.2f, 1.0f);
    draw_vector(wind);
    if (!param::initial_align_to_spawn_center(parameters)) {
        ormixGL_glColor4f(0.7f, 0.2f, 0.7f, 1.0f);
        draw_vector(instance.emission_vector);
    }

    if (world) ormixGL_glMultMatrixf(instance.rotation_scale_matrix.m);  // the cube follows the container
    draw_spawn_cube(parameters);
    ormixGL_glLineWidth(1.0f);
    if (world) ormixGL_glPopMatrix();
}

}  // namespace tovu
