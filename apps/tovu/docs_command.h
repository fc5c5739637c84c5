// `tovu docs`: the reference of the smoke's parameters, page and pictures.
#pragma once

#include <functional>
#include <string>

#include "stage/result.h"

namespace tovu {

struct DocsOptions {
    std::string folder;    // gets parameters.md, and parameters/ with the pictures; parameters/scenes has their scenes
    bool changed = false;  // draw only pictures whose sources changed
    bool check = false;    // write nothing; error if a file is not up to date
};

/// print: called with a line for each written file.
/// Errors: mistakes in the notes or scenes, files that cannot be written; with `check` a line for each file that is not
/// up to date. A picture is up to date if the digest of its sources equals the one that is stored beside it.
stage::Result<stage::Done> make_docs(const DocsOptions& options,
                                     const std::function<void(const std::string& line)>& print);

}  // namespace tovu
