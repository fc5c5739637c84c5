// Placement: parents, rotation and scale as read from a matrix, the roll of the camera.
#include <gmock/gmock.h>
#include <tovu/host_services.h>

#include <cmath>

#include "expect.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::FloatNear;
using tovu::transform_point;

auto is_near(Vector3 expected, float tolerance = 1e-4f) {
    return testing::AllOf(testing::Field("x", &Vector3::x, FloatNear(expected.x, tolerance)),
                          testing::Field("y", &Vector3::y, FloatNear(expected.y, tolerance)),
                          testing::Field("z", &Vector3::z, FloatNear(expected.z, tolerance)));
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

TEST_F(PlacedContainer, AScaleOfZeroHasNoInverse) {
    find_container(*stage, child)->placement.scale = {1, 0, 1};
    Matrix inverted{};
    _api__container_get_inverse_matrix(child, inverted.data());
    EXPECT_EQ(inverted, kIdentity);
}

// Pan, tilt and position are tested with the probe (tests/sdk).
TEST_F(PlacedContainer, APositiveRollTurnsTheTopOfTheCameraToTheLeft) {
    stage->camera.position = {};
    stage->camera.roll_degrees = 90;
    EXPECT_THAT(transform_point(view_matrix(stage->camera), {-1, 0, 0}), is_near({0, 1, 0}));
}

}  // namespace
}  // namespace stage
