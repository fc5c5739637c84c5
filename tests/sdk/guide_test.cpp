// Runs the plug-in of the guide for authors on the Stage. It acts as the guide says and detaches when it is removed.
#include <gmock/gmock.h>

#include <cmath>

#include "test_host.h"

namespace tovu {
namespace {

// Particles fly along -X at birth. Each is turned by 3 degrees in the frame of its birth and in every later one.
TEST(Guide, ItsPluginSwirlsTheSmoke) {
    TestHost host;
    const SmokeHandle smoke = host.add_smoke({{"birth_rate", 49.0},  // one birth in the second frame, none in the third
                                              {"opening_angle_x", 0.0},
                                              {"opening_angle_z", 0.0},
                                              {"initial_rot_z", 90.0}});
    const int32_t carrier = stage::add_container(host.stage(), "swirl");
    host.add_instance(carrier, TOVU_SWIRL_PLUGIN, {{"smoke_container", "smoke"}, {"degrees", 3.0}});
    host.run_frames(49);
    for (int i = 0; i < 10; ++i) stage::new_frame(host.stage());  // the last frame again
    host.run_frames(1);
    const std::vector<Particle*> list = host.active(smoke);
    ASSERT_GT(list.size(), 40);
    const Vector3 oldest = list.back()->velocity;
    // Born in the second of the fifty frames, and turned at the end of each since.
    EXPECT_NEAR(49 * 3, std::remainder(std::atan2(oldest.z, -oldest.x) * 180 / M_PI, 360), 2);
    EXPECT_NEAR(0, oldest.y, 1e-3);
    const Vector3 youngest = list.front()->velocity;
    EXPECT_NEAR(std::hypot(youngest.x, youngest.z), std::hypot(oldest.x, oldest.z), 1e-4);
    EXPECT_EQ(1, list.back()->claimed);

    ASSERT_TRUE(stage::remove_container(host.stage(), carrier));
    EXPECT_EQ(0, host.block(smoke).consumer_attached);
    host.run_frames(2);
    EXPECT_THAT(host.complaints(), testing::IsEmpty());
}

}  // namespace
}  // namespace tovu
