// Registers the plug-in and its parameters with the host.
#pragma once

namespace tovu {

/// Makes all registration calls. The order of the parameters' calls gives them their indices. Inside PLUGIN_INIT only.
void register_plugin();

}  // namespace tovu
