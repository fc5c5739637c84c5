// Saves a container of the document as a look.
#pragma once

#include "document.h"

namespace tovu {

struct LookToSave {
    std::string container;  // name in the built scene; for a layer of a look, the whole look is saved
    std::string purpose;    // one line; if empty, the origin of the look
    std::filesystem::path file;
    Overwrite overwrite = Overwrite::kNo;
};

/// Writes the same look as `tovu looks save` for the shown text. On an error no file is written. smoke: the plug-in of
/// the scene's smoke. Returns a line for each property that could not be converted. Error: the document is a look, the
/// scene has mistakes, the container cannot be saved as a look, or the file exists.
stage::Result<std::vector<std::string>> save_look(const Document& document, const LookToSave& look,
                                                  const stage::Plugin& smoke);

}  // namespace tovu
