// Loading plug-in libraries: what is registered, and what is refused and why.
#include <gmock/gmock.h>

#include <filesystem>

#include "host_services.h"
#include "probe_plugin.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kPlugins = std::string(TOVU_BINARY_DIR) + "/plugins/tests/";

class Loader : public testing::Test {
  protected:
    StagePtr stage_ = make_stage();
};

TEST_F(Loader, KeepsWhatWasRegistered) {
    const auto id = load_plugin(*stage_, kPlugins + "probe_plugin.so");
    ASSERT_TRUE(id) << id.error().message;
    const Plugin& probe = plugin(*id);
    EXPECT_EQ(probe.name, "Probe");
    EXPECT_EQ(probe.total_size, static_cast<int32_t>(sizeof(ProbeInstance)));
    EXPECT_TRUE(probe.uses_events);
    EXPECT_FALSE(probe.uses_lod);
    ASSERT_EQ(probe.parameters.size(), 7u);

    const ParameterInfo& count = probe.parameters[0];
    EXPECT_EQ(count.label, "Count");
    EXPECT_EQ(count.initial, ParameterValue(3));
    EXPECT_EQ(count.minimum, -5);
    EXPECT_EQ(count.maximum, 10);
    EXPECT_EQ(probe.parameters[1].initial, ParameterValue(0.5));
    EXPECT_EQ(probe.parameters[2].initial, ParameterValue(true));
    EXPECT_THAT(probe.parameters[3].choices, ElementsAre("Slow", "Fast"));
    EXPECT_EQ(probe.parameters[3].initial, ParameterValue(std::string("Fast")));
    EXPECT_EQ(probe.parameters[4].max_length, kProbeTextLength);
    EXPECT_EQ(probe.parameters[4].columns, 30);
    std::vector<std::string> kinds;
    for (const ParameterInfo& parameter : probe.parameters) kinds.push_back(to_string(parameter.kind));
    EXPECT_THAT(kinds, ElementsAre("Int", "Float", "Bool", "Radio", "String", "Container", "Image"));
    EXPECT_EQ(find_button(probe, "ask")->action, kProbeAsk);
    ASSERT_EQ(probe.events.size(), 1u);
    EXPECT_TRUE(has_kind(probe.events[0].handle, ObjectKind::Event));

    ASSERT_EQ(probe.registration_calls.size(), 16u);
    EXPECT_EQ(to_string(probe.registration_calls[0]), "pelRegisterPlugin(Probe)");
    EXPECT_EQ(to_string(probe.registration_calls[2]), "pelRegisterParameterInt(count, Count, 3, -5, 10)");
    EXPECT_EQ(to_string(probe.registration_calls[6]), "pelRegisterParameterString(text, Text, hello, 30, 20, 0)");
}

TEST_F(Loader, LoadsALibraryOnce) {
    const auto first = load_plugin(*stage_, kPlugins + "probe_plugin.so");
    const auto link = std::filesystem::temp_directory_path() / "tovu_loader_test_link.so";
    std::filesystem::remove(link);
    std::filesystem::create_symlink(kPlugins + "probe_plugin.so", link);
    const StagePtr other_stage = make_stage();
    const auto second = load_plugin(*other_stage, link);
    std::filesystem::remove(link);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, *second);
}

struct RefusedLibrary {
    const char* file;
    std::vector<const char*> messages;  // each must be in the error
};
const RefusedLibrary kRefusedLibraries[] = {
    {"no_such_plugin.so", {"not a plug-in library", "No such file"}},
    {"../../CMakeCache.txt", {"not a plug-in library", "invalid ELF header"}},
    {"../../lib/libtovu_stage.so", {"does not export PLUGIN_INIT, PLUGIN_INIT_FUNCTION, "}},
    {"faulty_entry_point_missing.so", {"does not export PLUGIN_RENDER_OPENGL"}},
    {"faulty_name_missing.so", {"its name is not registered (pelRegisterPlugin)"}},
    {"faulty_name_twice.so", {"its name is registered 2 times"}},
    {"faulty_name_of_another.so", {"its name 'Probe' is that of", "probe_plugin.so"}},
    {"faulty_type_missing.so", {"its type is not registered (pelRegisterPluginType)"}},
    {"faulty_type_wrong.so", {"its type is 7; 1, a geometry, is right"}},
    {"faulty_size_missing.so", {"its instance size is not registered (pelRegisterTotalSize)"}},
    {"faulty_size_too_small.so", {"3 bytes is too small for 1 parameter slots"}},
    {"faulty_init_not_zero.so", {"PLUGIN_INIT returned 5"}},
    {"faulty_parameter_twice.so", {"parameter 'first' is registered twice"}},
    {"faulty_default_outside.so", {"parameter 'second' takes a number from 0 to 10, not 11.5"}},
    {"faulty_scene_too_early.so", {"_api__object_valid was called inside PLUGIN_INIT"}},
};

TEST_F(Loader, SaysWhatIsWrongWithALibrary) {
    ASSERT_TRUE(load_plugin(*stage_, kPlugins + "probe_plugin.so"));
    const size_t loaded = loaded_plugins().size();
    for (const RefusedLibrary& row : kRefusedLibraries) {
        const auto id = load_plugin(*stage_, kPlugins + row.file);
        ASSERT_FALSE(id) << row.file;
        EXPECT_THAT(id.error().message, testing::StartsWith(kPlugins + row.file + ": "));
        for (const char* message : row.messages) EXPECT_THAT(id.error().message, HasSubstr(message));
        EXPECT_EQ(id.error().message.find('\n'), std::string::npos) << "nothing else is wrong: " << id.error().message;
    }
    EXPECT_EQ(loaded_plugins().size(), loaded);
}

TEST_F(Loader, RegistrationEndsWithTheLoading) {
    pelRegisterParameterBool("late", "Late", 0);
    ASSERT_EQ(stage_->complaints.list.size(), 1u);
    EXPECT_EQ(stage_->complaints.list[0].call, "pelRegisterParameterBool");
}

}  // namespace
}  // namespace stage
