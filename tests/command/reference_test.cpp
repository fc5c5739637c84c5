// What is known of the smoke's parameters: the notes beside the plug-in.
#include <gmock/gmock.h>

#include "stage/scene/stage.h"
#include "stage/scenefile/plugin_notes.h"

namespace {

using testing::IsEmpty;
using testing::Not;

TEST(Reference, NotesAreOfExactlyTheRegisteredParameters) {
    const auto host = stage::make_stage();
    const auto loaded = stage::load_plugin(*host, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(loaded) << loaded.error().message;
    const auto notes = stage::read_plugin_notes(stage::plugin(*loaded));
    ASSERT_TRUE(notes) << notes.error().message;
    std::vector<std::string> registered, noted;
    for (const auto& parameter : stage::plugin(*loaded).parameters) registered.push_back(parameter.name);
    for (const auto& parameter : notes->parameters) {
        noted.push_back(parameter.name);
        EXPECT_THAT(parameter.group, Not(IsEmpty())) << parameter.name;
        EXPECT_THAT(parameter.sentence, testing::EndsWith(".")) << parameter.name;
    }
    EXPECT_THAT(noted, testing::UnorderedElementsAreArray(registered));
}

}  // namespace
