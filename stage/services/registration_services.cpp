// Services that plug-ins call inside PLUGIN_INIT.
#include <fmt/format.h>
#include <tovu/host_services.h>

#include "serve.h"

namespace stage {
namespace {

/// Records which texts of the last call are null pointers.
template <class... Arguments>
void note_null_texts(Registration& registration, Arguments... arguments) {
    size_t position = 0;
    [[maybe_unused]] const auto note = [&](auto argument) {
        if constexpr (std::is_same_v<decltype(argument), const char*>)
            if (!argument)
                registration.null_texts.push_back({registration.plugin.registration_calls.size() - 1, position});
        ++position;
    };
    (note(arguments), ...);
}

/// Records the call and calls `add` with the running registration. Complains outside of PLUGIN_INIT.
template <class Add, class... Arguments>
void register_with(const char* name, Add add, Arguments... arguments) {
    const auto answer = [&] {
        if (Registration* registration = running_registration()) {
            registration->plugin.registration_calls.push_back(make_call(name, arguments...));
            note_null_texts(*registration, arguments...);
            add(*registration);
        } else if (Stage* stage = current_stage()) {
            complain(*stage, name, "registration is over once PLUGIN_INIT has returned");
        }
    };
    watched(name, 0, answer, arguments...);
}

ParameterInfo parameter_info(const char* name, const char* label, ParameterKind kind, ParameterValue initial) {
    ParameterInfo info;
    info.name = text_of(name);
    info.label = text_of(label);
    info.kind = kind;
    info.initial = std::move(initial);
    return info;
}

void add_limited(Registration& registration, ParameterInfo info, double minimum, double maximum) {
    info.minimum = minimum;
    info.maximum = maximum;
    add_parameter(registration, std::move(info));
}

void add_text(Registration& registration, ParameterInfo info, int32_t columns, int32_t max_length) {
    if (max_length < 1)
        registration.problems.push_back(
            fmt::format("the longest text of parameter '{}' is {} bytes; at least 1 is right", info.name, max_length));
    info.columns = columns;
    info.max_length = max_length;
    add_parameter(registration, std::move(info));
}

void add_choice(Registration& registration, ParameterInfo info, int32_t initial, const char* const* choices) {
    for (; choices && *choices; ++choices) info.choices.emplace_back(*choices);
    const bool is_choice = initial >= 0 && static_cast<size_t>(initial) < info.choices.size();
    if (is_choice) info.initial = info.choices[static_cast<size_t>(initial)];
    add_parameter(registration, std::move(info));
}

}  // namespace
}  // namespace stage

using namespace stage;

void pelRegisterPlugin(const char* name) {
    register_with(
        __func__,
        [&](Registration& registration) {
            registration.plugin.name = text_of(name);
            ++registration.names_given;
        },
        name);
}

void pelRegisterPluginType(int32_t type) {
    register_with(
        __func__,
        [&](Registration& registration) {
            registration.plugin.type = type;
            ++registration.types_given;
        },
        type);
}

void pelRegisterParameterInt(const char* name, const char* label, int32_t initial, int32_t minimum, int32_t maximum) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_limited(registration, parameter_info(name, label, ParameterKind::kInt, initial), minimum, maximum);
        },
        name, label, initial, minimum, maximum);
}

void pelRegisterParameterFloat(const char* name, const char* label, float initial, float minimum, float maximum) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_limited(registration, parameter_info(name, label, ParameterKind::kFloat, double{initial}),
                        double{minimum}, double{maximum});
        },
        name, label, initial, minimum, maximum);
}

void pelRegisterParameterBool(const char* name, const char* label, int32_t initial) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_parameter(registration, parameter_info(name, label, ParameterKind::kBool, initial != 0));
        },
        name, label, initial);
}

void pelRegisterParameterString(const char* name, const char* label, const char* initial, int32_t columns,
                                int32_t max_length, int32_t flags) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_text(registration, parameter_info(name, label, ParameterKind::kString, std::string(text_of(initial))),
                     columns, max_length);
        },
        name, label, initial, columns, max_length, flags);
}

void pelRegisterParameterRadio(const char* name, const char* label, int32_t initial, const char* const* choices) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_choice(registration, parameter_info(name, label, ParameterKind::kRadio, initial), initial, choices);
            if (registration.plugin.parameters.back().choices.empty())
                registration.problems.push_back(fmt::format("parameter '{}' has no choices", text_of(name)));
        },
        name, label, initial, choices);
}

void pelRegisterParameterContainer(const char* name, const char* label, const char* initial) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_text(registration,
                     parameter_info(name, label, ParameterKind::kContainer, std::string(text_of(initial))), 0,
                     kMaxObjectNameBytes);
        },
        name, label, initial);
}

void pelRegisterParameterImage(const char* name, const char* label, const char* initial) {
    register_with(
        __func__,
        [&](Registration& registration) {
            add_text(registration, parameter_info(name, label, ParameterKind::kImage, std::string(text_of(initial))), 0,
                     kMaxObjectNameBytes);
        },
        name, label, initial);
}

void pelRegisterInfoText(const char* name, const char* text) {
    register_with(
        __func__,
        [&](Registration& registration) {
            registration.plugin.info_texts.push_back({text_of(name), text_of(text)});
        },
        name, text);
}

void pelRegisterPushButton(const char* name, const char* label, int32_t action) {
    register_with(
        __func__,
        [&](Registration& registration) {
            registration.plugin.buttons.push_back({text_of(name), text_of(label), action});
        },
        name, label, action);
}

void pelRegisterTotalSize(int32_t bytes) {
    register_with(
        __func__,
        [&](Registration& registration) {
            registration.plugin.total_size = bytes;
            ++registration.sizes_given;
        },
        bytes);
}

void pelRegisterUseLOD(int32_t use) {
    register_with(
        __func__, [&](Registration& registration) { registration.plugin.uses_lod = use != 0; }, use);
}

void pelRegisterUseEvents(int32_t use) {
    register_with(
        __func__, [&](Registration& registration) { registration.plugin.uses_events = use != 0; }, use);
}

int32_t pelRegisterEvent(const char* name, int32_t flags) {
    int32_t handle = kNoObject;
    register_with(
        __func__, [&](Registration& registration) { handle = add_event(registration, text_of(name), flags); }, name,
        flags);
    return handle;
}
