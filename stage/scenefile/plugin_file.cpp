#include "plugin_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "stage/names.h"

namespace stage {

namespace {

constexpr const char* kSmoke = "smoke";

std::vector<std::string> plain_names(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code code;
    std::filesystem::directory_iterator entry(folder, code);
    for (; !code && entry != std::filesystem::directory_iterator(); entry.increment(code)) {
        if (entry->path().extension() == ".so") names.push_back(entry->path().stem().string());
    }
    std::sort(names.begin(), names.end());
    names.insert(names.begin(), kSmoke);
    return names;
}

}  // namespace

Result<std::string> find_plugin_file(const std::string& name, const std::string& smoke_plugin,
                                     const std::filesystem::path& folder) {
    if (name.empty() || name == kSmoke) return smoke_plugin;
    if (name.find_first_of("./") != std::string::npos) return (folder / name).string();
    const std::filesystem::path beside = std::filesystem::path(smoke_plugin).parent_path();
    const std::filesystem::path file = beside / (name + ".so");
    if (std::error_code ignored; std::filesystem::exists(file, ignored)) return file.string();
    return Error{fmt::format("unknown plug-in '{}': {}", name, name_hint(name, plain_names(beside)))};
}

}  // namespace stage
