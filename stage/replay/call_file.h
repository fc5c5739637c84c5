// Reads recorded calls: docs/replay.md describes the form.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

struct CallLine {
    int number = 0;                     // in the file, from 1
    size_t depth = 0;                   // 0 for the outermost
    std::string text;                   // of a call; what a line says otherwise; empty for an answer alone
    std::optional<std::string> answer;  // what the Stage answered
};

/// The lines in the order in which they happened: mesh walks are in place of their numbers, images are not among them.
struct CallFile {
    std::string name;
    uint32_t seed = 0;
    std::vector<CallLine> lines;
    std::map<uint32_t, std::vector<uint8_t>> images;  // pixels, by number
};

/// Error, "file:line: …": not a recording, an incomplete one, and what cannot be read.
STAGE_EXPORT Result<CallFile> read_call_file(const std::filesystem::path& file);

/// The names of the plug-ins that the calls were recorded with, in the order in which they are first needed.
STAGE_EXPORT std::vector<std::string> recorded_plugins(const CallFile& file);

}  // namespace stage
