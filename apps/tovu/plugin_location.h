// Where the smoke's library lies.
#pragma once

#include <string>

namespace tovu {

/// plugins/TovuSmoke.so beside the folder that this program's file is in, whether it is there or not.
std::string smoke_plugin_file();

}  // namespace tovu
