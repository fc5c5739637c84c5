// `tovu docs`: the reference of the smoke's parameters, page and pictures.
#pragma once

#include <functional>
#include <string>

#include "stage/result.h"

namespace tovu {

struct DocsOptions {
    std::string folder;    // gets parameters.md, and parameters/ with the pictures; parameters/scenes has their scenes
    bool changed = false;  // draw only the pictures whose sources changed
    bool check = false;    // write nothing; an error when something is not up to date
};

/// print: called with a line for each file that was written.
/// Errors: mistakes in the notes or scenes, files that cannot be written; with `check` a line for each file that is not
/// up to date. A picture is up to date while the digest of its sources is the one that is stored beside it.
stage::Result<stage::Done> make_docs(const DocsOptions& options,
                                     const std::function<void(const std::string& line)>& print);

}  // namespace tovu
