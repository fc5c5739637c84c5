// A container of the document as a look of its own.
#pragma once

#include "document.h"

namespace tovu {

struct LookToSave {
    std::string container;  // by its name in the built scene; of a layer, the container with its look is saved
    std::string purpose;    // one line; empty: where the look comes from
    std::filesystem::path file;
    Overwrite overwrite = Overwrite::kNo;
};

/// Writes the look that `tovu looks save` would make of the shown text, whole or not at all. smoke: the plug-in of the
/// scene's smokes. Returns lines about what could not be converted. Error: the document is a look, the text is no scene
/// that is right, nothing can be made of the container, or the file exists.
stage::Result<std::vector<std::string>> save_look(const Document& document, const LookToSave& look,
                                                  const stage::Plugin& smoke);

}  // namespace tovu
