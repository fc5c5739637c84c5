// Finds the file of a font.
#pragma once

#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct FontFile {
    std::string path;
    int face_index = 0;  // in a collection of fonts
};

/// `font`: the path of a font file (anything with a '/' in it, or that ends in .ttf, .otf, .ttc, .pfb or .woff), or the
/// name of an installed family, which fontconfig looks up, optionally with properties ("DejaVu Sans:bold").
/// Empty: DejaVu Sans. Error: no such file; no such family (the message names the nearest one).
STAGE_EXPORT Result<FontFile> find_font(const std::string& font);

}  // namespace stage
