#include "plugin_location.h"

#include "stage/scenefile/shipped_files.h"

namespace tovu {

std::string smoke_plugin_file() {
    return (stage::shipped_files_folder() / "plugins" / "TovuSmoke.so").string();
}

}  // namespace tovu
