// The notes on the smoke's parameters, and the reference that is made from them.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

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

TEST(Reference, PageAndPicturesAreMadeFromTheNotes) {
    EXPECT_EQ(0, std::system(TOVU_PROGRAM " docs " TOVU_SOURCE_DIR "/docs --check")) << "see above";
    uintmax_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TOVU_SOURCE_DIR "/docs/parameters"))
        if (entry.path().extension() == ".jpg") bytes += entry.file_size();
    EXPECT_LT(bytes, 5'000'000u);
}

}  // namespace
