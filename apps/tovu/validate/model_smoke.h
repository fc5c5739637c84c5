// A small model of a smoke that consumers attach to. Its records lie in fenced memory and are checked after each call
// of the consumer.
#pragma once

#include <cstdint>

#include <tovu/exchange.h>
#include "stage/plugins/fenced_memory.h"
#include "stage/scene/stage.h"

namespace tovu::validate {

struct ModelSmoke {
    int32_t container_handle = -1;
    int32_t geometry_handle = -1;
    stage::FencedMemory memory;  // the heads, the exchange block and the records
    bool attached = false;
    bool answers = true;  // false: accepts requests without answering them, as other plug-ins do
    int64_t births = 0;
};

/// Creates the smoke's geometry and records in this container of the watched Stage. `smoke` must not be moved
/// afterwards.
void make_model_smoke(ModelSmoke& smoke, int32_t container_handle);

/// Simulates a frame: particles age, move, die and are born. While a consumer is attached, the pool shrinks every
/// fourth frame.
void step_model_smoke(ModelSmoke& smoke);

/// Removes the geometry and makes the records unreadable.
void remove_model_smoke(ModelSmoke& smoke);

/// Answers a request sent to its geometry.
void answer_request(ModelSmoke& smoke, int32_t request, void* data, void* reply);

/// Checks that heads, links and exchange block are unchanged, and that the values written by the consumer are valid.
void check_records(ModelSmoke& smoke);

/// Checks that every live particle is claimed or released, and that no record on the deleted list stays claimed for
/// long.
void check_claims(ModelSmoke& smoke);

}  // namespace tovu::validate
