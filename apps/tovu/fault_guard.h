// How the command ends when a plug-in does what no plug-in may do, and when a signal ends it. The only place besides
// main that prints and chooses the exit status, since nothing returns to main then.
#pragma once

namespace tovu {

constexpr double kPluginTimeoutSeconds = 60;
constexpr double kMaxPluginTimeoutSeconds = 86400;

/// Call once, before a plug-in is loaded. From then on these end the process with status 2, after unfinished output
/// (stage/output/unfinished.h) is removed, and with a line on standard error that names entry point, plug-in, container
/// and frame, of the innermost call where calls nest:
/// - SIGSEGV, SIGBUS, SIGILL, SIGFPE or SIGABRT in plug-in code; in the stack's overflow too
/// - a C++ exception that leaves it, `exit` or `quick_exit` called by it (`_exit` cannot be noticed)
/// - an outermost call that takes longer than the timeout; kPluginTimeoutSeconds until set_plugin_timeout
/// The same faults outside plug-in code have their ordinary end.
///
/// SIGINT, SIGTERM and SIGHUP, unless they are ignored already, end the process at any moment in the same way, with
/// status 128 + signal.
void install_fault_guard();

/// Bounds the time that one outermost call into a plug-in takes. seconds: above 0 to kMaxPluginTimeoutSeconds; 0:
/// without bound. A call is ended after at most a tenth more, or half a second where that is less. Time in which the
/// whole process is stopped does not count.
void set_plugin_timeout(double seconds);

}  // namespace tovu
