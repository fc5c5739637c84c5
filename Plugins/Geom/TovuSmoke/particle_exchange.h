// Requests of other plug-ins: a consumer attaches to the live particles, or detaches.
#pragma once

#include "instance/smoke_instance.h"

namespace tovu {

/// Answers 'RAD1' (attach, or refresh an attachment) and 'RAD2' (detach); other requests are ignored.
/// data: a ParticleAttachRequest for 'RAD1', not read for 'RAD2'. reply: the address of a ParticleExchangeBlock*.
/// An attach without either is ignored; a detach without a reply slot still detaches.
void answer_request(SmokeInstance& instance, int32_t request, const void* data, void* reply);

}  // namespace tovu
