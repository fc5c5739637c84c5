// Documents of the studio: names, history, states, saving, recovery, and random edits of the shipped files.
#include "apps/studio/document/document.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <toml++/toml.h>
#include <unistd.h>

#include <random>

#include "../stage/temporary_folder.h"
#include "apps/studio/document/autosave.h"
#include "apps/studio/document/recent_files.h"
#include "apps/studio/document/save_look.h"
#include "random_seed.h"
#include "stage/scene/stage.h"
#include "stage/scenefile/look_file.h"
#include "stage/scenefile/scene_reader.h"

namespace tovu {
namespace {

using stage::Done;
using stage::ParameterValue;
using testing::HasSubstr;

constexpr const char* kScene = R"([[container]]
name = "plume" # the main one
texture = ["puff", "wisp"]
parameters = { birth_rate = 20 }

[[container]]
name = "fire"
look = "campfire"
)";

Document document_of(const std::string& text) {
    Document document;
    for (DocumentState& state : document.states) state.text = text;
    return document;
}

void set(Document& document, const char* container, const char* name, const ParameterValue& value) {
    const auto done = set_parameter(document, container, name, value);
    ASSERT_TRUE(done) << done.error().message;
}

std::vector<std::filesystem::path> shipped_files() {
    std::vector<std::filesystem::path> files;
    for (const char* folder : {"scenes", "looks"}) {
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(TOVU_SOURCE_DIR) / folder))
            if (entry.path().extension() == ".toml") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

struct NameCase {
    const char* name;
    const char* container;
    const char* after;  // the text after birth_rate of the container is set to 7
};

void PrintTo(const NameCase& row, std::ostream* stream) {
    *stream << row.name;
}

const NameCase kNames[] = {
    {"a container", "plume", "parameters = { birth_rate = 7 }\n"},
    {"a container of another texture", "plume/2", "parameters = { birth_rate = 7 }\n"},
    {"all layers of a look", "fire", "look = \"campfire\"\n[container.parameters]\nbirth_rate = 7\n"},
    {"a layer of a look", "fire.lit smoke",
     "look = \"campfire\"\n[container.layers.\"lit smoke\".parameters]\nbirth_rate = 7\n"},
};

class Names : public testing::TestWithParam<NameCase> {};

TEST_P(Names, OfTheBuiltSceneAreFoundInTheText) {
    const NameCase& row = GetParam();
    Document document = document_of(kScene);
    set(document, row.container, "birth_rate", 7.0);
    EXPECT_THAT(document_text(document), HasSubstr(row.after));
    EXPECT_EQ(ParameterValue(7), written_parameters(document, row.container)["birth_rate"]);
    ASSERT_TRUE(reset_parameters(document, row.container));
    EXPECT_TRUE(written_parameters(document, row.container).empty());
    EXPECT_EQ(2u, document.states[0].applied);
}

INSTANTIATE_TEST_SUITE_P(Document, Names, testing::ValuesIn(kNames));

TEST(Document, UndoAndRedoTakeADragAsOneChange) {
    Document document = document_of(kScene);
    ASSERT_TRUE(set_parameter(document, "plume", "gravity", -1.0, "Gravity of plume"));
    EXPECT_EQ("Gravity of plume", undo_label(document));
    const std::string first = document_text(document);
    begin_change(document, "drag");
    for (const double value : {21.0, 25.0, 30.5}) set(document, "plume", "birth_rate", value);
    end_change(document);
    const std::string second = document_text(document);
    begin_change(document, "drag back and forth");
    set(document, "plume", "birth_rate", 1.0);
    set(document, "plume", "birth_rate", 30.5);
    end_change(document);

    EXPECT_EQ("drag", undo_label(document));
    undo(document);
    EXPECT_EQ(first, document_text(document));
    undo(document);
    EXPECT_EQ(kScene, document_text(document));
    undo(document);
    redo(document);
    EXPECT_EQ("drag", redo_label(document));
    redo(document);
    EXPECT_EQ(second, document_text(document));
    undo(document);
    set(document, "plume", "birth_rate", 2.0);
    EXPECT_EQ("", redo_label(document)) << "a new change discards those that were undone";
    undo(document);
    undo(document);
    EXPECT_EQ(kScene, document_text(document));
}

TEST(Document, StatesHaveTheirOwnHistory) {
    Document document = document_of(kScene);
    set(document, "plume", "birth_rate", 1.0);
    const std::string a = document_text(document);
    show_state(document, 1);
    EXPECT_EQ(kScene, document_text(document));
    set(document, "plume", "birth_rate", 2.0);
    show_state(document, 0);
    EXPECT_EQ(a, document_text(document));
    copy_to_other_state(document);
    show_state(document, 1);
    EXPECT_EQ(a, document_text(document));
    undo(document);
    EXPECT_THAT(document_text(document), HasSubstr("birth_rate = 2"));
}

TEST(Document, SavingKeepsWhatAnotherProgramWrote) {
    const TemporaryFolder folder;
    const auto file = folder / "scene.toml";
    write_bytes(file, kScene);
    auto document = open_document(file);
    ASSERT_TRUE(document);
    set(*document, "plume", "birth_rate", 3.0);
    EXPECT_TRUE(has_unsaved_changes(*document));
    ASSERT_TRUE(save_document(*document));
    EXPECT_FALSE(has_unsaved_changes(*document));
    EXPECT_EQ(document_text(*document), file_bytes(file));

    write_bytes(file, "# other\n");
    set(*document, "plume", "birth_rate", 4.0);
    const auto refused = save_document(*document);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error().message, HasSubstr("another program has changed the file"));
    EXPECT_EQ("# other\n", file_bytes(file));
    ASSERT_TRUE(save_document(*document, Overwrite::kYes));
    EXPECT_EQ(document_text(*document), file_bytes(file));
    write_bytes(folder / "taken.toml", "# other\n");
    EXPECT_FALSE(save_document_as(*document, folder / "taken.toml"));
    EXPECT_EQ("# other\n", file_bytes(folder / "taken.toml"));
    std::filesystem::remove(file);
    ASSERT_TRUE(save_document(*document)) << "a file that was removed is written anew";
    EXPECT_EQ(document_text(*document), file_bytes(file));
}

TEST(Document, OfAFileThatComesAlongIsACopy) {
    const TemporaryFolder folder;
    const auto shipped = std::filesystem::path(TOVU_SOURCE_DIR) / "scenes" / "cup_steam.toml";
    const std::string before = file_bytes(shipped);
    auto document = open_document(shipped);
    ASSERT_TRUE(document);
    ASSERT_TRUE(set_key(*document, {{"length"}}, "2"));
    EXPECT_FALSE(save_document(*document));
    EXPECT_EQ("this scene:3:1: wrong", with_scene_named(*document, scene_file(*document).string() + ":3:1: wrong"));
    ASSERT_TRUE(save_document_as(*document, folder / "mine.toml"));
    ASSERT_TRUE(set_key(*document, {{"length"}}, "3"));
    ASSERT_TRUE(save_document(*document));
    EXPECT_THAT(file_bytes(folder / "mine.toml"), HasSubstr("length = 3\n"));
    EXPECT_EQ(before, file_bytes(shipped));
}

TEST(Document, IsOpenedOnlyFromASceneOrALook) {
    const TemporaryFolder folder;
    write_bytes(folder / "picture.png", "\x89PNG");
    for (const auto& [name, message] : {std::pair{"picture.png", "picture.png: is not a scene or a look"},
                                        {"absent.toml", "absent.toml: there is no such file"}}) {
        const auto opened = open_document(folder / name);
        ASSERT_FALSE(opened) << name;
        EXPECT_THAT(opened.error().message, HasSubstr(message));
    }
}

TEST(RecentFiles, AreTheLastEightThatExist) {
    const TemporaryFolder folder;
    const auto state = folder / "state";
    std::vector<std::filesystem::path> expected;
    for (const char* name : {"1", "2", "über alles 3", "4", "5", "6", "7", "8", "9", "10", "4"}) {
        write_bytes(folder / name, "");
        ASSERT_TRUE(remember_file(state, folder / name));
        std::erase(expected, folder / name);
        expected.insert(expected.begin(), folder / name);
    }
    expected.resize(8);
    EXPECT_EQ(expected, recent_files(state));
    std::filesystem::remove(expected[2]);
    expected.erase(expected.begin() + 2);
    EXPECT_EQ(expected, recent_files(state));
}

TEST(Document, SavedElsewhereItNamesTheSameFiles) {
    const TemporaryFolder folder;
    for (const auto& file : shipped_files()) {
        auto document = open_document(file);
        ASSERT_TRUE(document) << file;
        ASSERT_TRUE(save_document_as(*document, folder / file.filename().string(), Overwrite::kYes)) << file;
        if (file.stem() == "images") continue;
        const auto read = stage::read_scene(scene_text(*document), scene_file(*document));
        EXPECT_TRUE(read) << file << "\n" << read.error().message;
    }
}

TEST(Document, ALookIsRunAsASceneOfItsLayers) {
    for (const auto& file : stage::look_files(std::filesystem::path(TOVU_SOURCE_DIR) / "looks")) {
        const auto document = open_document(file);
        const auto look = stage::load_look_file(file);
        ASSERT_TRUE(document && look) << file;
        const auto scene = stage::read_scene(scene_text(*document), scene_file(*document));
        ASSERT_TRUE(scene) << scene.error().message;
        EXPECT_EQ(look->rate, scene->frame_rate);
        ASSERT_EQ(look->layers.size(), scene->containers.size());
        for (size_t i = 0; i < look->layers.size(); ++i) {
            EXPECT_EQ(look->layers[i].name, scene->containers[i].name);
            EXPECT_EQ(look->layers[i].place, scene->containers[i].place) << "line and column";
            EXPECT_EQ(look->layers[i].parameters.size(), scene->containers[i].parameters.size());
        }
        auto fresh = new_scene_of_look(file.stem().string(), "/");
        ASSERT_TRUE(fresh);
        frame_new_scene(*fresh, {{-1.5f, 20, 1e6f}, 7});
        const auto framed = stage::read_scene(scene_text(*fresh), scene_file(*fresh));
        ASSERT_TRUE(framed) << framed.error().message;
        EXPECT_EQ((stage::Triple{-1.5f, 20, 1e6f}), framed->camera.position);
        EXPECT_EQ(7, framed->prewarm);
        EXPECT_EQ("", undo_label(*fresh));
    }
}

TEST(Document, SavesALookOfWhatIsShown) {
    const TemporaryFolder folder;
    const auto host = stage::make_stage();
    const auto loaded = stage::load_plugin(*host, TOVU_SMOKE_PLUGIN);
    ASSERT_TRUE(loaded);
    Document document = document_of(kScene);
    document.folder = folder.path();
    set(document, "fire.embers", "birth_rate", 7.0);
    const LookToSave look{"fire.embers", "A \"fire\".", folder.path() / "my" / "fire.toml"};
    ASSERT_TRUE(save_look(document, look, stage::plugin(*loaded)));
    const auto saved = stage::load_look_file(look.file);
    ASSERT_TRUE(saved) << saved.error().message;
    EXPECT_EQ(look.purpose, saved->purpose);
    EXPECT_EQ(50.0, saved->rate) << "the scene's";
    const auto embers = std::find_if(saved->layers.begin(), saved->layers.end(),
                                     [](const auto& layer) { return layer.name == "embers"; });
    ASSERT_NE(embers, saved->layers.end());
    const auto is_rate = [](const auto& setting) { return setting.name == "birth_rate"; };
    const auto rate = std::find_if(embers->parameters.begin(), embers->parameters.end(), is_rate);
    ASSERT_NE(rate, embers->parameters.end());
    EXPECT_EQ(ParameterValue(7), rate->value);
    EXPECT_FALSE(save_look(document, look, stage::plugin(*loaded))) << "the file is there";
}

TEST(Document, SurvivesACrash) {
    const TemporaryFolder folder;
    const auto file = folder / "scene.toml";
    write_bytes(file, kScene);
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t child = fork();
    if (child == 0) {
        auto document = open_document(file);
        auto place = begin_autosave(folder.path());
        bool done = document && place;
        for (const double rate : {5.0, 6.0}) {
            done = done && set_parameter(*document, "plume", "birth_rate", rate) && autosave(*place, *document);
            if (done && rate == 5.0) show_state(*document, 1);
        }
        const char byte = done ? 1 : 0;
        if (write(ready[1], &byte, 1) == 1) pause();
        _exit(1);
    }
    char done = 0;
    ASSERT_EQ(1, read(ready[0], &done, 1));
    ASSERT_EQ(1, done);
    EXPECT_TRUE(find_recoveries(folder.path()).empty()) << "while the process lives";
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    const auto found = find_recoveries(folder.path());
    ASSERT_EQ(1u, found.size());
    EXPECT_EQ(file, found[0].original);
    auto place = begin_autosave(folder.path());
    ASSERT_TRUE(place);
    EXPECT_NE(found[0].copy, place->file) << "the copy is not overwritten";
    auto document = recover(found[0]);
    ASSERT_TRUE(document);
    EXPECT_EQ(1u, document->shown);
    EXPECT_EQ(ParameterValue(6), written_parameters(*document, "plume")["birth_rate"]);
    show_state(*document, 0);
    EXPECT_EQ(ParameterValue(5), written_parameters(*document, "plume")["birth_rate"]);
    ASSERT_TRUE(autosave(*place, *document));
    EXPECT_TRUE(std::filesystem::exists(place->file));
    ASSERT_TRUE(save_document(*document));
    ASSERT_TRUE(autosave(*place, *document));
    EXPECT_FALSE(std::filesystem::exists(place->file)) << "nothing is left to recover once it is saved";
    set(*document, "plume", "birth_rate", 7.0);
    ASSERT_TRUE(autosave(*place, *document));
    const auto left = place->file;
    leave_autosave(*place);
    ASSERT_EQ(2u, find_recoveries(folder.path()).size()) << "what was left without saving is offered too";
    EXPECT_EQ(left, find_recoveries(folder.path())[0].copy);
    for (const Recovery& recovery : find_recoveries(folder.path())) discard_recovery(recovery);
    place = begin_autosave(folder.path());
    ASSERT_TRUE(place);
    end_autosave(*place);
    EXPECT_TRUE(find_recoveries(folder.path()).empty());
}

// Paths to parameters of the file's containers or layers. The file has some of the parameters.
std::vector<KeyPath> parameter_paths(const toml::table& root) {
    std::vector<KeyPath> paths;
    for (const char* key : {"container", "layer"}) {
        const toml::array* array = root[key].as_array();
        for (size_t i = 0; array != nullptr && i < array->size(); ++i) {
            for (const char* name : {"birth_rate", "gravity", "color", "not there yet"})
                paths.push_back({{key, static_cast<int>(i)}, {"parameters"}, {name}});
            paths.push_back({{key, static_cast<int>(i)}, {"opacity"}});
            paths.push_back({{key, static_cast<int>(i)}, {"layers"}, {"embers"}, {"parameters"}, {"birth_rate"}});
        }
    }
    paths.push_back({{"length"}});
    paths.push_back({{"camera"}, {"position"}});
    return paths;
}

// Makes the same change in the parser's tables.
void change(toml::table& root, const KeyPath& path, const std::string& value) {
    toml::table* table = &root;
    for (size_t i = 0; i + 1 < path.size(); ++i) {
        if (value.empty() && !table->contains(path[i].key)) return;
        toml::node& node = table->emplace<toml::table>(path[i].key).first->second;
        table = path[i].index < 0 ? node.as_table()
                                  : node.as_array()->get_as<toml::table>(static_cast<size_t>(path[i].index));
    }
    table->erase(path.back().key);
    if (!value.empty()) table->insert(path.back().key, *toml::parse("a = " + value).get("a"));
}

TEST(Document, RandomEditsChangeTheirValueAlone) {
    const RandomSeed seed;
    std::mt19937 random(seed.value);
    const auto pick = [&random](const auto& from) -> const auto& {
        return from[random() % std::size(from)];
    };
    const std::string kValues[] = {"", "", "0.25", "-3", "true", "\"0 1 \\\"é\\\" 1\"", "[1, 2, 3]", "{ a = 1 }"};
    for (const auto& file : shipped_files()) {
        auto document = open_document(file);
        ASSERT_TRUE(document) << file;
        std::vector<std::string> texts = {document_text(*document)};
        for (int i = 0; i < 60; ++i) {
            toml::table expected = toml::parse(document_text(*document));
            const KeyPath path = pick(parameter_paths(expected));
            const std::string value = pick(kValues);
            change(expected, path, value);
            const auto done = value.empty() ? remove_key(*document, path) : set_key(*document, path, value);
            ASSERT_TRUE(done) << name_of(path) << " = " << value << ": " << done.error().message;
            ASSERT_EQ(expected, toml::parse(document_text(*document))) << name_of(path) << " = " << value;
            if (document_text(*document) != texts.back()) texts.push_back(document_text(*document));
        }
        for (size_t i = texts.size(); i-- > 0; undo(*document)) ASSERT_EQ(texts[i], document_text(*document));
    }
}

}  // namespace
}  // namespace tovu
