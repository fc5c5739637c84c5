// Violations of the contract by plug-ins. The Stage continues after them and answers a wrong call like a call with an
// unknown handle.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "stage/stage_export.h"

namespace stage {

struct Stage;

struct Complaint {
    std::string call;     // the service or entry point, "_api__get_image_size"
    std::string caller;   // "PLUGIN_NEW_GEOM of TovuSmoke in 'steam'"; empty for calls from outside of plug-ins
    std::string message;  // the violation
    int64_t times = 1;    // number of repetitions
};

/// Keeps at most kMaxComplaints different complaints; `dropped` counts the others.
struct Complaints {
    std::vector<Complaint> list;
    int64_t dropped = 0;
    std::function<void(const Complaint&)> sink;  // if set, called for each complaint, also for repeated ones
};
constexpr int kMaxComplaints = 1000;

/// Adds a complaint about the innermost entry point that is running.
STAGE_EXPORT void complain(Stage& stage, std::string call, std::string message);

/// "PLUGIN_NEW_GEOM of TovuSmoke in 'steam'".
STAGE_EXPORT std::string describe_call(const Stage& stage, std::string_view entry_point, std::string_view plugin_name,
                                       int32_t container_handle);

/// "_api__get_image_size, called by PLUGIN_NEW_GEOM of TovuSmoke in 'steam': … (3 times)".
STAGE_EXPORT std::string to_string(const Complaint& complaint);

}  // namespace stage
