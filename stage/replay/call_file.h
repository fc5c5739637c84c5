// Reads recorded calls. docs/replay.md describes the format.
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
    int number = 0;                     // line number in the file, from 1
    size_t depth = 0;                   // nesting depth; 0 for the outermost
    std::string text;                   // the call or other content; empty for a line with only an answer
    std::optional<std::string> answer;  // the answer of the Stage
};

/// The lines in the order of the calls. Mesh walks are inserted where the file refers to them; images are stored apart.
struct CallFile {
    std::string name;
    uint32_t seed = 0;
    std::vector<CallLine> lines;
    std::map<uint32_t, std::vector<uint8_t>> images;  // pixels, by number
};

/// Errors, as "file:line: …": the file is not a recording, is incomplete or cannot be read.
STAGE_EXPORT Result<CallFile> read_call_file(const std::filesystem::path& file);

/// The names of the recorded plug-ins, in the order of their first use.
STAGE_EXPORT std::vector<std::string> recorded_plugins(const CallFile& file);

}  // namespace stage
