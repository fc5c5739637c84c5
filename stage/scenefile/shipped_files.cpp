#include "shipped_files.h"

#include <dlfcn.h>

namespace stage {

std::filesystem::path shipped_files_folder() {
    Dl_info info{};
    dladdr(reinterpret_cast<const void*>(&shipped_files_folder), &info);
    std::error_code ignored;
    return std::filesystem::canonical(info.dli_fname, ignored).parent_path().parent_path();
}

}  // namespace stage
