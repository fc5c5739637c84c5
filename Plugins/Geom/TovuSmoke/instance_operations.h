// The operations behind the entry points: building and freeing an instance, its frame, changed parameters, buttons.
#pragma once

#include "instance/smoke_instance.h"

namespace tovu {

/// Builds the instance in place over the host's block of kInstanceBytes, leaving the parameter slots as they are.
void initialise_instance(void* block);

/// Frees all that the instance owns. Tells neither the host nor a consumer.
void clean_up_instance(SmokeInstance& instance);

/// One frame: runs the simulation step, picks up changed names of sources, places the images' rectangles and tells the
/// host that the geometry changed. Does nothing when called from inside the instance's own step, while the step waits
/// for the host or another plug-in.
void rebuild_frame(SmokeInstance& instance);

/// Rebuilds what depends on the parameter with this index. Other indices do nothing.
void parameter_changed(SmokeInstance& instance, int32_t parameter_index);

/// Action numbers of the push buttons, as registered.
constexpr int32_t kActionReset = 1;       // sends every live particle back to the pool
constexpr int32_t kActionBuildAlpha = 2;  // writes the sampled alpha curve into `return_value`

/// Runs the action of a push button. Unknown numbers do nothing.
void execute_action(SmokeInstance& instance, int32_t action);

}  // namespace tovu
