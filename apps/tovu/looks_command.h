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

/// A line for each look that comes along and each in the folder looks/ of the current folder: its name and purpose.
stage::Result<stage::Done> list_looks(const PrintLine& print);

/// Writes a look of a scene's container to options.output, or to looks/CONTAINER.toml beside the scene, which must not
/// exist yet. Prints the file's name. warn: what could not be converted.
stage::Result<stage::Done> save_look(const LooksOptions& options, const PrintLine& print, const PrintLine& warn);

/// Prints what differs: "layer.parameter: A -> B". A parameter that a look leaves out has its default.
stage::Result<stage::Done> diff_looks(const LooksOptions& options, const PrintLine& print);

/// Writes the look converted to a frame rate to options.output, or prints it.
stage::Result<stage::Done> retime_look_file(const LooksOptions& options, const PrintLine& print, const PrintLine& warn);

}  // namespace tovu
