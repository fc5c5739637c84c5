// Calls across the boundary as text, the same for the recorder, which writes it, and for the replay, which compares it.
#pragma once

#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "digest.h"
#include "stage/plugins/plugin.h"
#include "stage/scene/stage.h"
#include "value_text.h"

namespace stage {

/// "name(1, 2.5, "text")". Addresses are left out, but for the cursors that a service advances; events have their
/// names. A request to another plug-in has its code and what the shared headers say that it sends.
std::string call_text(const char* name, std::span<const CallValue> arguments);

/// The text of a call of an entry point: "PLUGIN_NEW_GEOM("container", 0)".
std::string entry_text(const Stage& stage, const RunningCall& call);

/// The texts with which a call of an entry point ends: "state DIGEST" after a PLUGIN_NEW_GEOM of a plug-in with a field
/// table (state_digest), then "-> " and its result, or its reply to a request.
std::vector<std::string> end_texts(const RunningCall& call, const FieldTable& table);

/// Whether the instance was running already when this call, the innermost, began.
bool is_reentry(const Stage& stage, const RunningCall& call);

/// Calls `use` with the address of every answer that a service gives, in order: its result, then its out values (16 of
/// a matrix). Skips out values without an address, and those of requests, which the other plug-in gives.
template <class Use>
void for_each_answer(ServiceCall& call, const Use& use);

/// The registration calls of a plug-in, one text each. The size of its block is left out: it depends on the size of an
/// address.
std::vector<std::string> registration_texts(const Plugin& plugin);

// Implementation.

bool answers_with_matrix(const char* service);

template <class Use>
void for_each_answer(ServiceCall& call, const Use& use) {
    if (call.has_result) use(&call.result);
    const size_t count = answers_with_matrix(call.name) ? 16 : 1;
    for (const CallValue& argument : call.arguments) {
        const auto use_out_value = [&](auto value) {
            using Value = decltype(value);
            constexpr bool kIsOut = std::is_same_v<Value, int32_t*> || std::is_same_v<Value, float*> ||
                                    std::is_same_v<Value, double*> || std::is_same_v<Value, uint8_t*> ||
                                    std::is_same_v<Value, uint8_t**>;
            if constexpr (kIsOut)
                for (size_t i = 0; value && i < count; ++i) use(value + i);
        };
        std::visit(use_out_value, argument);
    }
}

}  // namespace stage
