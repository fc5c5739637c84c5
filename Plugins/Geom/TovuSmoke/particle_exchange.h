// Requests of consumer plug-ins: attach to the live particles, or detach.
#pragma once

#include "instance/smoke_instance.h"

namespace tovu {

/// Answers 'RAD1' (attach, or refresh an attachment) and 'RAD2' (detach); ignores other requests.
/// data: a ParticleAttachRequest for 'RAD1'; not read for 'RAD2'. reply: the address of a ParticleExchangeBlock*.
/// An attach with `data` or `reply` null is ignored. A detach works with `reply` null too.
void answer_request(SmokeInstance& instance, int32_t request, const void* data, void* reply);

}  // namespace tovu
