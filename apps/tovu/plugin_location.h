// The path of the smoke plug-in's library.
#pragma once

#include <string>

namespace tovu {

/// ../plugins/TovuSmoke.so, relative to the folder of this program's file. Does not check that the file exists.
std::string smoke_plugin_file();

}  // namespace tovu
