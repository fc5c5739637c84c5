// Ends the process after a fault in a plug-in (a crash, an exception, exit, a timeout) and on signals. main does not
// get control back then, so this file also prints and chooses the exit status.
#pragma once

namespace tovu {

constexpr double kPluginTimeoutSeconds = 60;
constexpr double kMaxPluginTimeoutSeconds = 86400;

/// Call once, before a plug-in is loaded. Each of these faults then removes unfinished output
/// (stage/output/unfinished.h), prints a line with entry point, plug-in, container and frame to standard error, and
/// ends the process with status 2. If calls are nested, the line names the innermost one.
/// - SIGSEGV, SIGBUS, SIGILL, SIGFPE or SIGABRT in plug-in code, also after a stack overflow
/// - a C++ exception that leaves plug-in code; `exit` or `quick_exit` called by it (`_exit` cannot be detected)
/// - an outermost call that takes longer than the timeout: kPluginTimeoutSeconds, or as set with set_plugin_timeout
/// Outside plug-in code these faults keep their default effect.
///
/// SIGINT, SIGTERM and SIGHUP end the process in the same way at any time, with status 128 + signal. A signal that is
/// ignored when this is called stays ignored.
void install_fault_guard();

/// Limits the duration of each outermost call into a plug-in. seconds: above 0 to kMaxPluginTimeoutSeconds; 0: no
/// limit. A call can exceed the limit by a tenth, but by no more than half a second. Time in which the whole process is
/// stopped does not count.
void set_plugin_timeout(double seconds);

}  // namespace tovu
