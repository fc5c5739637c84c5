#include "plugin_location.h"

#include <filesystem>

namespace tovu {

std::string smoke_plugin_file() {
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path().parent_path() / "plugins" / "TovuSmoke.so").string();
}

}  // namespace tovu
