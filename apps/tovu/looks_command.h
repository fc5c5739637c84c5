// `tovu looks`: lists looks, saves, compares and converts them.
#pragma once

#include <functional>
#include <string>

#include "stage/result.h"

namespace tovu {

/// The options as texts of the command line; empty when not given.
struct LooksOptions {
    std::string scene, container;  // save
    std::string first, second;     // diff: names of looks, or files
    std::string look, rate;        // retime
    std::string output;            // save, retime: the file to write
};

/// Prints a line of text.
using PrintLine = std::function<void(const std::string& line)>;

/// Prints the name and purpose of each installed look and of each look in the folder looks/ of the current folder.
stage::Result<stage::Done> list_looks(const PrintLine& print);

/// Writes a scene's container as a look to options.output, or to looks/CONTAINER.toml beside the scene, which must not
/// exist yet. Prints the file's name. warn: called for each value that could not be converted.
stage::Result<stage::Done> save_look(const LooksOptions& options, const PrintLine& print, const PrintLine& warn);

/// Prints a line such as "layer.parameter: A -> B" for each difference. A parameter that a look leaves out has its
/// default.
stage::Result<stage::Done> diff_looks(const LooksOptions& options, const PrintLine& print);

/// Writes the look converted to a frame rate to options.output, or prints it.
stage::Result<stage::Done> retime_look_file(const LooksOptions& options, const PrintLine& print, const PrintLine& warn);

}  // namespace tovu
