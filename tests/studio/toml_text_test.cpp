// Changes of single values in TOML text: the value is written at the right place, and nothing else changes.
#include "apps/studio/document/toml_text.h"

#include <gmock/gmock.h>

namespace tovu {
namespace {

struct ChangeCase {
    const char* name;
    const char* before;
    KeyPath path;
    const char* value;  // null: the value is removed
    const char* after;
};

void PrintTo(const ChangeCase& row, std::ostream* stream) {
    *stream << row.name;
}

const KeyPath kRate = {{"container", 0}, {"parameters"}, {"rate"}};
const KeyPath kOfLayer = {{"container", 0}, {"layers"}, {"embers"}, {"parameters"}, {"rate"}};

const ChangeCase kChanges[] = {
    {"only the value changes, its comment stays",  //
     "[[container]]\n[container.parameters]\nrate  =  5 # slow\n", kRate, "7.5",
     "[[container]]\n[container.parameters]\nrate  =  7.5 # slow\n"},
    {"a new value goes behind the last one and its comment",
     "[[container]]\n[container.parameters]\n  size = 5 # small\n\n[camera]\n", kRate, "7",
     "[[container]]\n[container.parameters]\n  size = 5 # small\n  rate = 7\n\n[camera]\n"},
    {"an empty table gets its first line", "[[container]]\n[container.parameters] # none\n", kRate, "7",
     "[[container]]\n[container.parameters] # none\nrate = 7\n"},
    {"a missing table gets a header before what is nested",
     "[[container]]\nname = \"a\"\n\n[[container.container]]\nname = \"b\"\n", kRate, "7",
     "[[container]]\nname = \"a\"\n[container.parameters]\nrate = 7\n\n[[container.container]]\nname = \"b\"\n"},
    {"the nested container's table has its full name",
     "[[container]]\nname = \"a\"\n[[container.container]]\nname = \"b\"\n[[container]]\nname = \"c\"\n",
     {{"container", 0}, {"container", 0}, {"parameters"}, {"rate"}},
     "7",
     "[[container]]\nname = \"a\"\n[[container.container]]\nname = \"b\"\n[container.container.parameters]\nrate = 7\n"
     "[[container]]\nname = \"c\"\n"},
    {"a layer's changes go behind the container's other tables",
     "[[container]]\nlook = \"fire\"\n[container.parameters]\nlife = 2\n\n[[container]]\n", kOfLayer, "7",
     "[[container]]\nlook = \"fire\"\n[container.parameters]\nlife = 2\n[container.layers.embers.parameters]\nrate = "
     "7\n"
     "\n[[container]]\n"},
    {"an inline table grows", "[[container]]\n[container.layers.embers]\nparameters = { size = 1 } # small\n", kOfLayer,
     "7", "[[container]]\n[container.layers.embers]\nparameters = { size = 1, rate = 7 } # small\n"},
    {"an empty inline table is filled", "[[container]]\nparameters = {}\n", kRate, "7",
     "[[container]]\nparameters = { rate = 7 }\n"},
    {"containers in an inline array",
     "container = [{ name = \"a\" }, { name = \"b\" }]",
     {{"container", 1}, {"parameters"}, {"rate"}},
     "7",
     "container = [{ name = \"a\" }, { name = \"b\", parameters = { rate = 7 } }]"},
    {"dotted keys stay dotted", "[[container]]\nparameters.size = 1\nname = \"a\"\n", kRate, "7",
     "[[container]]\nparameters.size = 1\nparameters.rate = 7\nname = \"a\"\n"},
    {"dotted keys in an inline table", "container = [{ parameters.size = 1, name = \"a\" }]\n", kRate, "7",
     "container = [{ parameters.size = 1, name = \"a\", parameters.rate = 7 }]\n"},
    {"several dotted steps are created at once",
     "a.b.c = 1\n",
     {{"a"}, {"b"}, {"d"}, {"e f"}},
     "true",
     "a.b.c = 1\na.b.d.\"e f\" = true\n"},
    {"a table that only has deeper headers gets its own",
     "[a.b]\nc = 1\n",
     {{"a"}, {"d"}},
     "2",
     "[a.b]\nc = 1\n\n[a]\nd = 2\n"},
    {"a scene's key goes before the tables",
     "# A scene.\nseed = 1\n\n[camera]\nroll = 1\n",
     {{"length"}},
     "3",
     "# A scene.\nseed = 1\nlength = 3\n\n[camera]\nroll = 1\n"},
    {"a scene's first key goes behind the comment at the top",
     "# A scene.\n[[container]]\n",
     {{"length"}},
     "3",
     "# A scene.\nlength = 3\n\n[[container]]\n"},
    {"the camera goes behind the scene's keys",
     "seed = 1\n\n[[container]]\n",
     {{"camera"}, {"roll"}},
     "3",
     "seed = 1\n\n[camera]\nroll = 3\n\n[[container]]\n"},
    {"an empty file", "", {{"camera"}, {"roll"}}, "3", "[camera]\nroll = 3\n"},
    {"a file that is a comment without a line end", "# A scene.", {{"length"}}, "3", "# A scene.\nlength = 3\n"},
    {"Windows line ends", "[[container]]\r\n[container.parameters]\r\nsize = 1 # c\r\n", kRate, "7",
     "[[container]]\r\n[container.parameters]\r\nsize = 1 # c\r\nrate = 7\r\n"},
    {"no line end at the end of the file", "[[container]]\n[container.parameters]\nsize = 1", kRate, "7",
     "[[container]]\n[container.parameters]\nsize = 1\nrate = 7"},
    {"letters of several bytes before the value",
     "\xef\xbb\xbf\"größe\" = 1\n\"ü\" = { \"ö\" = \"ä\", b = 2 }\n",
     {{"ü"}, {"b"}},
     "3",
     "\xef\xbb\xbf\"größe\" = 1\n\"ü\" = { \"ö\" = \"ä\", b = 3 }\n"},
    {"a text of several lines is replaced",
     "a = \"\"\"\nx = 1\n\"\"\" # c\nb = 2\n",
     {{"a"}},
     "\"y\"",
     "a = \"y\" # c\nb = 2\n"},
    {"an array of several lines ends where it ends",
     "[a]\nb = [\n  1, # one\n  2,\n]\n[c]\n",
     {{"a"}, {"d"}},
     "3",
     "[a]\nb = [\n  1, # one\n  2,\n]\nd = 3\n[c]\n"},
    {"a removed line takes its comment with it",
     "[a]\n# above\nb = 1 # beside\n# below\nc = 2\n",
     {{"a"}, {"b"}},
     nullptr,
     "[a]\n# above\n# below\nc = 2\n"},
    {"a removed array takes all its lines", "a = [\n  1,\n]\r\nb = 1\r\n", {{"a"}}, nullptr, "b = 1\r\n"},
    {"the last line of a file without a line end", "a = 1\nb = 2", {{"b"}}, nullptr, "a = 1\n"},
    {"the first entry of an inline table", "a = { b = 1, c = 2 }\n", {{"a"}, {"b"}}, nullptr, "a = { c = 2 }\n"},
    {"a later entry of an inline table",
     "a = { b = 1, c = 2, d = 3 }\n",
     {{"a"}, {"c"}},
     nullptr,
     "a = { b = 1, d = 3 }\n"},
    {"the only entry of an inline table", "a = { b = 1 } # c\n", {{"a"}, {"b"}}, nullptr, "a = {} # c\n"},
    {"a dotted entry of an inline table",
     "a = { b = 1, c.d = 2, c.e = 3 }\n",
     {{"a"}, {"c"}, {"d"}},
     nullptr,
     "a = { b = 1, c.e = 3 }\n"},
    {"the last dotted key leaves its table", "[[container]]\nparameters.rate = 1 # c\n", kRate, nullptr,
     "[[container]]\nparameters = {} # c\n"},
    {"nothing is removed where nothing is", "a = 1 # c\n", {{"b"}, {"c"}}, nullptr, "a = 1 # c\n"},
};

class Changes : public testing::TestWithParam<ChangeCase> {};

TEST_P(Changes, GiveThisText) {
    const ChangeCase& row = GetParam();
    const auto changed =
        row.value == nullptr ? without_value(row.before, row.path) : with_value(row.before, row.path, row.value);
    ASSERT_TRUE(changed) << changed.error().message;
    EXPECT_EQ(row.after, *changed);
    EXPECT_EQ(row.value == nullptr ? "" : row.value, value_at(*changed, row.path));
}

INSTANTIATE_TEST_SUITE_P(TomlText, Changes, testing::ValuesIn(kChanges));

}  // namespace
}  // namespace tovu
