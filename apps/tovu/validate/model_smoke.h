// A small stand-in for a smoke that consumers attach to. Its records lie in memory of its own, and it looks at them
// after each of the consumer's calls.
#pragma once

#include <cstdint>
#include <vector>

#include <tovu/exchange.h>
#include "stage/plugins/fenced_memory.h"
#include "stage/scene/stage.h"

namespace tovu::validate {

struct ModelSmoke {
    int32_t container_handle = -1;
    int32_t geometry_handle = -1;
    stage::FencedMemory memory;  // the heads, the exchange block and the records
    bool attached = false;
    bool answers = true;          // false: it takes requests and ignores them, as other plug-ins do
    int64_t births = 0;
};

/// Makes the smoke in this container of the watched Stage: its geometry, its records, its answers. `smoke` must stay
/// where it is.
void make_model_smoke(ModelSmoke& smoke, int32_t container_handle);

/// What a smoke does in its frame: particles age, move, die and are born; at odd frames records leave the pool.
void step_model_smoke(ModelSmoke& smoke);

/// Removes its geometry; its memory cannot be read any more.
void remove_model_smoke(ModelSmoke& smoke);

/// Answers a request sent to its geometry.
void answer_request(ModelSmoke& smoke, int32_t request, void* data, void* reply);

/// Whether heads, links and exchange block are as the smoke left them, and what the consumer wrote is possible.
void check_records(ModelSmoke& smoke);

/// Whether every live particle is claimed or released, and no record that left the pool is held for long.
void check_claims(ModelSmoke& smoke);

}  // namespace tovu::validate
