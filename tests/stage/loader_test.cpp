// Loading of plug-in libraries: the registration, and the messages about rejected libraries.
#include <gmock/gmock.h>

#include "stage/plugins/plugin.h"
#include "stage/scene/stage.h"
#include "temporary_folder.h"

namespace stage {
namespace {

using testing::HasSubstr;

const std::string kPlugins = std::string(TOVU_BINARY_DIR) + "/plugins/tests/";

class Loader : public testing::Test {
  protected:
    StagePtr stage = make_stage();
};

TEST_F(Loader, LoadsALibraryOnce) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink(kPlugins + "probe_plugin.so", folder / "link.so");
    const auto first = load_plugin(*stage, kPlugins + "probe_plugin.so");
    const StagePtr other_stage = make_stage();
    const auto second = load_plugin(*other_stage, folder / "link.so");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(*first, *second);
}

const std::pair<const char*, std::vector<const char*>> kRefusedLibraries[] = {
    // file, parts of the message
    {"no_such_plugin.so", {"not a plug-in library", "No such file"}},
    {"../../CMakeCache.txt", {"not a plug-in library", "invalid ELF header"}},
    {"../../lib/libtovu_stage_core.so", {"does not export PLUGIN_INIT, PLUGIN_INIT_FUNCTION, "}},
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
    ASSERT_TRUE(load_plugin(*stage, kPlugins + "probe_plugin.so"));
    const size_t loaded = loaded_plugins().size();
    for (const auto& [file, messages] : kRefusedLibraries) {
        const auto id = load_plugin(*stage, kPlugins + file);
        ASSERT_FALSE(id) << file;
        EXPECT_THAT(id.error().message, testing::StartsWith(kPlugins + file + ": "));
        for (const char* message : messages) EXPECT_THAT(id.error().message, HasSubstr(message));
        EXPECT_EQ(id.error().message.find('\n'), std::string::npos) << "nothing else is wrong: " << id.error().message;
    }
    EXPECT_EQ(loaded_plugins().size(), loaded);
}

}  // namespace
}  // namespace stage
