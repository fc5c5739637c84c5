// Placement: how containers and cameras transform points, and rotation and scale as read from their matrices.
#include <gmock/gmock.h>
#include <tovu/host_services.h>

#include <cmath>

#include "expect.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::ElementsAre;
using testing::FloatNear;
using testing::Pointwise;
using tovu::transform_point;

auto is_near(Vector3 expected, float tolerance = 1e-4f) {
    return testing::AllOf(testing::Field("x", &Vector3::x, FloatNear(expected.x, tolerance)),
                          testing::Field("y", &Vector3::y, FloatNear(expected.y, tolerance)),
                          testing::Field("z", &Vector3::z, FloatNear(expected.z, tolerance)));
}

const std::tuple<const char*, Placement, Vector3, Vector3> kPlacedPoints[] = {
    // name, placement, point, transformed point
    {"turns about x from y to z", {{0, 0, 0}, {90, 0, 0}, {1, 1, 1}}, {1, 2, 3}, {1, -3, 2}},
    {"turns about y from z to x", {{0, 0, 0}, {0, 90, 0}, {1, 1, 1}}, {1, 2, 3}, {3, 2, -1}},
    {"turns about z from x to y", {{0, 0, 0}, {0, 0, 90}, {1, 1, 1}}, {1, 2, 3}, {-2, 1, 3}},
    {"turns about y before x", {{0, 0, 0}, {90, 90, 0}, {1, 1, 1}}, {0, 0, 1}, {1, 0, 0}},
    {"turns about z before y", {{0, 0, 0}, {0, 90, 90}, {1, 1, 1}}, {0, 1, 0}, {0, 0, 1}},
    {"scales first and moves last", {{5, 6, 7}, {0, 0, 90}, {2, 3, 4}}, {1, 1, 1}, {5 - 3, 6 + 2, 7 + 4}},
};

TEST(Placement, PlacesPoints) {
    for (const auto& [name, placement, point, expected] : kPlacedPoints)
        EXPECT_THAT(transform_point(local_matrix(placement), point), is_near(expected)) << name;
}

class PlacedContainer : public testing::Test {
  protected:
    StagePtr stage = make_stage();
    int32_t parent = add_container(*stage, "parent");
    int32_t child = add_container(*stage, "child", parent);
};

TEST_F(PlacedContainer, ChildIsPlacedInItsParent) {
    find_container(*stage, parent)->placement = {{100, 0, 0}, {0, 0, 90}, {2, 2, 2}};
    find_container(*stage, child)->placement.position = {1, 0, 0};
    EXPECT_THAT(transform_point(world_matrix(*stage, child), {0, 3, 0}), is_near({100 - 6, 2, 0}));

    Vector3 position{};
    _api__container_get_absolute_position(child, &position.x, &position.y, &position.z);
    EXPECT_THAT(position, is_near({100, 2, 0}));
}

using Row = std::tuple<const char*, Vector3, Vector3, Vector3, Vector3>;
const Row kReadBacks[] = {
    // name, rotation and scale that are given, rotation and scale that are read
    {"angles beyond 180 degrees", {200, 10, -190}, {1, 1, 1}, {-160, 10, 170}, {1, 1, 1}},
    {"y beyond 90 degrees", {0, 120, 0}, {1, 1, 1}, {180, 60, 180}, {1, 1, 1}},
    {"z is 0 where y is 90 degrees", {10, 90, 30}, {1, 1, 1}, {40, 90, 0}, {1, 1, 1}},
    {"a mirrored axis is read as a negative x scale", {0, 0, 0}, {1, -2, 1}, {0, 0, -180}, {-1, 2, 1}},
    {"an axis scaled to 0", {0, 0, 0}, {2, 0, 3}, {0, 0, 0}, {2, 0, 3}},
};

TEST_F(PlacedContainer, RotationAndScalingAreReadFromTheWorldMatrix) {
    for (const auto& [name, placed_rotation, placed_scale, expected_rotation, expected_scale] : kReadBacks) {
        find_container(*stage, child)->placement = {{7, 8, 9}, placed_rotation, placed_scale};
        Vector3 rotation{}, scale{};
        _api__container_get_absolute_rotation(child, &rotation.x, &rotation.y, &rotation.z);
        _api__container_get_absolute_scaling(child, &scale.x, &scale.y, &scale.z);
        for (const auto axis : {&Vector3::x, &Vector3::z})  // -180 and 180 degrees are the same rotation
            if (std::abs(rotation.*axis - expected_rotation.*axis) > 359) rotation.*axis = -(rotation.*axis);
        EXPECT_THAT(rotation, is_near(expected_rotation, 1e-3f)) << name;
        EXPECT_THAT(scale, is_near(expected_scale)) << name;
    }
}

TEST_F(PlacedContainer, RotationAndScalingThatAreReadGiveTheSameMatrix) {
    for (float x = -180; x <= 180; x += 45)
        for (float y = -90; y <= 90; y += 30)
            for (float z = -170; z <= 180; z += 50) {
                find_container(*stage, parent)->placement = {{0, 0, 0}, {x, y, z}, {2, 2, 2}};
                find_container(*stage, child)->placement = {{0, 0, 0}, {-z, x, y}, {1, 3, 0.5f}};
                const Matrix world = world_matrix(*stage, child);
                Vector3 rotation{}, scale{};
                _api__container_get_absolute_rotation(child, &rotation.x, &rotation.y, &rotation.z);
                _api__container_get_absolute_scaling(child, &scale.x, &scale.y, &scale.z);
                const Matrix again = local_matrix({{0, 0, 0}, rotation, scale});
                ASSERT_THAT(again, Pointwise(FloatNear(2e-5f), world)) << x << ' ' << y << ' ' << z;
            }
}

TEST_F(PlacedContainer, InverseUndoesTheTransformation) {
    find_container(*stage, parent)->placement = {{3, 4, 5}, {30, 40, 50}, {2, 2, 2}};
    find_container(*stage, child)->placement = {{-1, 0, 6}, {15, 0, 80}, {1, 4, 0.5f}};
    Matrix matrix{}, inverted{};
    _api__container_get_transformation_matrix(child, matrix.data());
    _api__container_get_inverse_matrix(child, inverted.data());
    EXPECT_THAT(matrix, world_matrix(*stage, child));
    EXPECT_THAT(multiply(inverted, matrix), Pointwise(FloatNear(1e-5f), kIdentity));

    find_container(*stage, child)->placement.scale = {1, 0, 1};
    _api__container_get_inverse_matrix(child, inverted.data());
    EXPECT_EQ(inverted, kIdentity) << "a scale of 0 has no inverse";
}

struct CameraView {
    const char* name;
    float pan, tilt, roll;
    Vector3 direction;
    Vector3 top;  // where the camera's +Y points in the world
};
const float kHalf = 0.5f, kCos30 = 0.8660254f;
const CameraView kCameraViews[] = {
    {"unturned", 0, 0, 0, {0, 0, -1}, {0, 1, 0}},
    {"a positive pan looks to the left", 90, 0, 0, {-1, 0, 0}, {0, 1, 0}},
    {"a positive tilt looks up", 0, 30, 0, {0, kHalf, -kCos30}, {0, kCos30, kHalf}},
    {"the pan comes first", 90, 30, 0, {-kCos30, kHalf, 0}, {kHalf, kCos30, 0}},
    {"a positive roll turns the top to the left", 0, 0, 90, {0, 0, -1}, {-1, 0, 0}},
};

TEST_F(PlacedContainer, CameraLooksWhereItIsTurned) {
    const int32_t camera = _api__get_cameraid(-1, "RENDERCAMERA", TOVU_OBJECT_CAMERA);
    const auto vector_of = [camera](void (*get)(int32_t, int32_t*)) {
        int32_t object = -1;
        Vector3 vector{};
        get(camera, &object);
        _api__get_position(object, &vector.x, &vector.y, &vector.z);
        return vector;
    };
    for (const auto& [name, pan, tilt, roll, direction, top] : kCameraViews) {
        SCOPED_TRACE(name);
        stage->camera.position = {10, 20, 30};
        stage->camera.pan_degrees = pan;
        stage->camera.tilt_degrees = tilt;
        stage->camera.roll_degrees = roll;
        EXPECT_THAT(vector_of(_api__get_camera_position), is_near({10, 20, 30}));
        EXPECT_THAT(vector_of(_api__get_camera_direction), is_near(direction));

        Matrix view{};
        _api__get_camera_view_matrix(camera, view.data());
        const auto ahead = [](Vector3 way) { return Vector3{10 + 5 * way.x, 20 + 5 * way.y, 30 + 5 * way.z}; };
        EXPECT_THAT(transform_point(view, ahead(direction)), is_near({0, 0, -5}));
        EXPECT_THAT(transform_point(view, ahead(top)), is_near({0, 5, 0}));
    }
}

TEST(Projection, FieldOfViewIsVertical) {
    Camera camera;
    camera.field_of_view_degrees = 90;
    const Matrix m = projection_matrix(camera, 2);
    // At distance d the picture reaches d up and 2d to the side; near and far become -1 and 1 after the division by w.
    constexpr double kRange = kFarDistance - kNearDistance;
    const auto z = static_cast<float>(-(kFarDistance + kNearDistance) / kRange);
    const auto offset = static_cast<float>(-2 * kFarDistance * kNearDistance / kRange);
    EXPECT_THAT(
        m, ElementsAre(FloatNear(0.5f, 1e-6f), 0, 0, 0, 0, FloatNear(1, 1e-6f), 0, 0, 0, 0, z, -1, 0, 0, offset, 0));
}

}  // namespace
}  // namespace stage
