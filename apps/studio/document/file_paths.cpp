#include "file_paths.h"

#include <algorithm>

#include "stage/scenefile/look_file.h"
#include "toml_text.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;

// The file that a text value names, relative to `from`; empty if the value is not a file name.
fs::path named_file(const WrittenText& written, const fs::path& from) {
    const std::string& key = written.path.back().key;
    const std::string& value = written.value;
    const auto is_parameters = [](const KeyStep& step) { return step.key == "parameters"; };
    if (std::any_of(written.path.begin(), written.path.end(), is_parameters)) return {};
    std::error_code ignored;
    const bool has_ending = value.find_first_of("./") != std::string::npos;
    if (written.path.front().key == "images") return value.find_first_of("./%") == std::string::npos ? "" : value;
    if (key == "file") return value;
    if (key == "font") return fs::is_regular_file(from / value, ignored) ? value : "";
    if (key == "plugin") return has_ending ? value : "";
    if (key != "look") return {};
    if (value.find('/') != std::string::npos || value.ends_with(".toml")) return value;
    const fs::path own = fs::path("looks") / (value + ".toml");
    return fs::is_regular_file(from / own, ignored) ? own : "";
}

}  // namespace

std::string with_moved_files(const std::string& text, const fs::path& from, const fs::path& to) {
    if (from == to) return text;
    std::string moved = text;
    for (const WrittenText& written : written_texts(text)) {
        const fs::path file = named_file(written, from);
        if (file.empty() || file.is_absolute()) continue;
        const fs::path target = (from / file).lexically_normal().lexically_relative(to);
        if (const auto changed = with_value(moved, written.path, toml_text_of(target.string()))) moved = *changed;
    }
    return moved;
}

}  // namespace tovu
