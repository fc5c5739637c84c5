#include "recent_files.h"

#include <algorithm>
#include <sstream>

#include "stage/output/whole_file.h"

namespace tovu {

namespace {

namespace fs = std::filesystem;
using stage::Done;
using stage::Result;

constexpr size_t kKept = 8;

fs::path list_file(const fs::path& folder) {
    return folder / "recent_files";
}

// Reads the list: one path on each line, newest first.
std::vector<fs::path> read_list(const fs::path& folder) {
    std::vector<fs::path> files;
    std::istringstream lines(stage::read_whole_file(list_file(folder)));
    for (std::string line; std::getline(lines, line);) files.emplace_back(line);
    return files;
}

}  // namespace

Result<Done> remember_file(const fs::path& folder, const fs::path& file) {
    std::vector<fs::path> files = read_list(folder);
    std::erase(files, file);
    files.insert(files.begin(), file);
    if (files.size() > kKept) files.resize(kKept);
    std::string text;
    for (const fs::path& one : files) text += one.string() + "\n";
    std::error_code ignored;
    fs::create_directories(folder, ignored);
    return stage::write_whole_file(list_file(folder), text);
}

std::vector<fs::path> recent_files(const fs::path& folder) {
    std::vector<fs::path> files = read_list(folder);
    std::error_code ignored;
    std::erase_if(files, [&](const fs::path& file) { return !fs::is_regular_file(file, ignored); });
    return files;
}

}  // namespace tovu
