// The text of calls between plug-ins and the Stage. The recorder writes it and the replay compares it.
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

/// A text such as "name(1, 2.5, "text")". Addresses are left out, except cursors that a service advances. Events are
/// written with their names, requests to other plug-ins with their code and the data that the shared headers define.
std::string call_text(const char* name, std::span<const CallValue> arguments);

/// The text of a call of an entry point: "PLUGIN_NEW_GEOM("container", 0)".
std::string entry_text(const Stage& stage, const RunningCall& call);

/// The texts of the end of an entry point call: "state DIGEST" after a PLUGIN_NEW_GEOM of a plug-in with a field
/// table (state_digest), then "-> " and its result, or its reply to a request.
std::vector<std::string> end_texts(const RunningCall& call, const FieldTable& table);

/// True if an outer running call belongs to the same instance. call: the innermost running call.
bool is_reentry(const Stage& stage, const RunningCall& call);

/// Calls `use` with the address of every answer that a service gives, in order: its result, then its out values (16 of
/// a matrix). Skips out values without an address, and those of requests, which are set by the other plug-in.
template <class Use>
void for_each_answer(ServiceCall& call, const Use& use);

/// The registration calls of a plug-in, one text each. The size of its block is left out, since it depends on the size
/// of an address.
std::vector<std::string> registration_texts(const Plugin& plugin);

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
