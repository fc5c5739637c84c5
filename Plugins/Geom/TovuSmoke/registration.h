// Tells the host, at load time, what the plug-in is and which parameters it has.
#pragma once

namespace tovu {

/// Makes every registration call, in the order that gives the parameters their indices. Inside PLUGIN_INIT only.
void register_plugin();

}  // namespace tovu
