// What the host is told at load time: every call, in order, with its arguments.
#include <gmock/gmock.h>

#include "render_host.h"

namespace {

using tovu::logged;

std::string number(const char* name, const char* label, int initial, int low, int high) {
    return logged("pelRegisterParameterInt", name, label, initial, low, high);
}
std::string real(const char* name, const char* label, float initial, float low, float high) {
    return logged("pelRegisterParameterFloat", name, label, initial, low, high);
}
std::string on_off(const char* name, const char* label, int initial) {
    return logged("pelRegisterParameterBool", name, label, initial);
}
std::string text(const char* name, const char* label, const char* initial, int longest) {
    return logged("pelRegisterParameterString", name, label, initial, 30, longest, 0);
}
std::string radio(const char* name, const char* label, int initial) {
    return logged("pelRegisterParameterRadio", name, label, initial);
}

constexpr float kWide = 999999.875f;  // the float32 nearest to 999999.9

std::vector<std::string> expected_calls() {
    return {
        logged("pelRegisterPlugin", "TovuSmoke"),
        logged("pelRegisterPluginType", 1),
        number("number_of_particles", "Number of Particles", 100, 0, 25000),
        real("birth_rate", "Birth Rate per Second", 30, 0, 1e7f),
        real("size_birth_x", "Size Birth X", 5, 0, 1e9f),
        real("size_death_x", "Size Death X", 15, 0, 1e9f),
        real("size_birth_y", "Size Birth Y", 5, 0, 1e9f),
        real("size_death_y", "Size Death Y", 15, 0, 1e9f),
        on_off("size_lock", "Size Lock", 1),
        real("rot_start", "Rot Start", 0, -1e7f, 1e7f),
        real("rot_start_spread", "Rot Start Spread", 0, 0, 100),
        real("rot_change", "Rot Change", 0, -1e7f, 1e7f),
        real("rot_change_spread", "Rot Change Spread", 0, 0, 100),
        on_off("rot_follow_path", "Rot Follow Path", 0),
        text("alpha_curve", "Alpha Curve", "0.0 1.0 1.0 0.0", 4096),
        text("color", "Color", "0.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0", 4096),
        real("life_time", "Life Time", 3, 0, 1e7f),
        real("life_time_spread", "Life Time Spread", 0, 0, 100),
        radio("spawn_type", "Spawn Type", 0),
        real("spawn_range_x", "Spawn Range X", 0, 0, 1e7f),
        real("spawn_range_y", "Spawn Range Y", 0, 0, 1e7f),
        real("spawn_range_z", "Spawn Range Z", 0, 0, 1e7f),
        real("spawn_offset", "Spawn Offset", 100, 0, 100),
        real("opening_angle_x", "Opening Angle X", 45, 0, 360),
        real("opening_angle_z", "Opening Angle Z", 45, 0, 180),
        real("opening_angle_twist", "Opening Angle Twist", 0, -1e7f, 1e7f),
        on_off("opening_angle_lock", "Opening Angle Lock", 1),
        real("initial_speed", "Initial Speed", 50, -kWide, kWide),
        real("initial_speed_spread", "Initial Speed Spread", 0, 0, 100),
        real("initial_rot_x", "Initial Rot X", 0, -kWide, kWide),
        real("initial_rot_z", "Initial Rot Z", 0, -kWide, kWide),
        on_off("initial_align_to_spawn_center", "Initial Align To Spawn Center", 0),
        real("gravity", "Gravity", 0, -kWide, kWide),
        real("turbulence_x", "Turbulence X", 0, -kWide, kWide),
        real("turbulence_y", "Turbulence Y", 0, -kWide, kWide),
        real("turbulence_z", "Turbulence Z", 0, -kWide, kWide),
        real("wind_force", "Wind Force", 0, -kWide, kWide),
        real("wind_rot_x", "Wind Rot X", 0, -kWide, kWide),
        real("wind_rot_z", "Wind Rot Z", 0, -kWide, kWide),
        real("air_resistance", "Air Resistance", 0, 0, 100),
        radio("reference", "Reference", 0),
        radio("billboard", "Billboard", 1),
        on_off("show_forces", "Show Forces", 0),
        on_off("sort", "Sort by Depth", 0),
        on_off("disable_depth", "Disable Depth Write", 1),
        on_off("use_array", "Use Array", 0),
        on_off("freeze_motion", "Freeze Motion", 0),
        text("return_value", "Return Value", "", 65536),
        logged("pelRegisterParameterContainer", "spawn_cont_name", "Spawn Container", ""),
        radio("spawn_cont_ref_plane", "Ref Plane", 0),
        radio("spawn_cont_coord", "Coordinates", 1),
        real("life_time_scale", "Death Acceleration", 100, 0, 100),
        real("size_birth_spread_x", "Size Birth Spread X", 0, 0, 100),
        real("size_birth_spread_y", "Size Birth Spread Y", 0, 0, 100),
        real("size_death_spread_x", "Size Death Spread X", 0, 0, 100),
        real("size_death_spread_y", "Size Death Spread Y", 0, 0, 100),
        logged("pelRegisterParameterImage", "wind_image", "Wind Image", ""),
        real("wind_image_range_x", "Wind Image Range X", 0, 0, 1e7f),
        real("wind_image_range_y", "Wind Image Range Y", 0, 0, 1e7f),
        on_off("use_wind_image", "Use Wind Image", 0),
        logged("pelRegisterParameterImage", "spawn_image", "Spawn Image", ""),
        on_off("spawn_image_bool", "Spawn Image Bool", 1),
        logged("pelRegisterInfoText", "info", "Version 1.0. 0"),
        logged("pelRegisterPushButton", "reset", "Reset", 1),
        logged("pelRegisterPushButton", "build_alpha", "Build Alpha", 2),
        logged("pelRegisterTotalSize", 9096),
        logged("pelRegisterUseLOD", 0),
        logged("pelRegisterUseEvents", 1),
        logged("pelRegisterEvent", "Sort", 0),
        logged("pelRegisterEvent", "qsort", 0),
    };
}

TEST(Registration, CallsInOrder) {
    tovu::TestHost host;
    std::vector<std::string> calls;
    for (const stage::Call& call : stage::plugin(host.smoke_plugin()).registration_calls)
        calls.push_back(to_string(call));
    EXPECT_THAT(calls, testing::ElementsAreArray(expected_calls()));
}

TEST(Registration, ChoicesOfTheRadios) {
    tovu::TestHost host;
    const std::pair<const char*, std::vector<std::string>> radios[] = {
        {"spawn_type", {"Cube", "Sphere", "Container", "Image"}},
        {"reference", {"Local", "World"}},
        {"billboard", {"None", "Particle"}},
        {"spawn_cont_ref_plane", {"XY", "XZ"}},
        {"spawn_cont_coord", {"Local", "World"}}};
    for (const auto& [name, choices] : radios)
        EXPECT_EQ(choices, stage::find_parameter(stage::plugin(host.smoke_plugin()), name)->choices) << name;
}

}  // namespace
