// Records every call between plug-ins and the Stage as text. docs/replay.md describes the format.
#pragma once

#include <ostream>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Records into `out` from now on, in the whole process: services with their answers, entry points, OpenGL calls.
/// Replaces the call watch and the OpenGL functions. Call it before the first instance is made. seed: of the Stage,
/// whose instances must have separate random streams. title: one line for readers.
STAGE_EXPORT void begin_recording(std::ostream& out, uint32_t seed, const std::string& title);

/// Ends the recording and writes its last line. Call it after all instances are removed, or after an error. Error: a
/// mistake in the field table of a plug-in. The caller checks `out` for write errors.
STAGE_EXPORT Result<Done> end_recording();

}  // namespace stage
