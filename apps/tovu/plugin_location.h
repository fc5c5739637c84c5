// The path of the smoke plug-in's library.
#pragma once

#include <string>

namespace tovu {

/// plugins/TovuSmoke.so in the folder of the files that ship with the Stage. Does not check that the file exists.
std::string smoke_plugin_file();

}  // namespace tovu
