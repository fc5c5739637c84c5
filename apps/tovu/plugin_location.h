// The path of the smoke plug-in's library.
#pragma once

#include <string>

namespace tovu {

/// plugins/TovuSmoke.so among the files that come along with the Stage. Does not check that the file exists.
std::string smoke_plugin_file();

}  // namespace tovu
