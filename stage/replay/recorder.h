// Records every call between plug-ins and the Stage as text: docs/replay.md describes the form.
#pragma once

#include <ostream>
#include <string>

#include "stage/result.h"
#include "stage/stage_export.h"

namespace stage {

/// Records into `out` from now on, in the whole process: services with their answers, entry points, OpenGL calls. Takes
/// the place of the call watch and of the OpenGL functions. Begin before the first instance is made. seed: the Stage's;
/// its instances must have random numbers of their own. title: one line for readers.
STAGE_EXPORT void begin_recording(std::ostream& out, uint32_t seed, const std::string& title);

/// Ends the recording and writes its last line: after all instances are removed, or to give the recording up after an
/// error. Error: the field table of a plug-in was wrong. Whether `out` took everything is for its owner to see.
STAGE_EXPORT Result<Done> end_recording();

}  // namespace stage
