// Checks of groups load and register.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

#include "checks.h"
#include "child.h"
#include "gl_watch.h"
#include "rig.h"
#include "stage/plugins/registration.h"
#include "watch.h"

namespace tovu::validate {
namespace {

using stage::Call;
using stage::ParameterInfo;
using stage::ParameterKind;
using stage::Registration;

constexpr int64_t kMostBytes = int64_t{64} << 20;
constexpr size_t kMostChoices = 1000;
constexpr const char* kOrder = "pelRegisterPlugin first, then pelRegisterPluginType, then the rest";

/// Loads the library and calls its PLUGIN_INIT. Empty after a finding.
std::optional<Registration> register_subject(const Subject& subject) {
    static const stage::StagePtr host = stage::make_stage();
    stage::make_current(host.get());
    watch_stage(*host);
    watch_opengl();
    const RunningCode running("PLUGIN_INIT");
    stage::Result<Registration> registered = stage::try_plugin(*host, subject.path);
    if (registered) {
        note_library(*watch().outcome, reinterpret_cast<const void*>(registered->plugin.entry_points.init));
        return std::move(*registered);
    }
    fail("load.init", registered.error().message, "a library that loads with RTLD_NOW");
    return std::nullopt;
}

std::string text_of(const Call& call, size_t argument) {
    if (argument >= call.arguments.size()) return "";
    const auto* text = std::get_if<std::string>(&call.arguments[argument]);
    return text ? *text : "";
}

bool is_parameter(const Call& call) {
    return call.name.rfind("pelRegisterParameter", 0) == 0;
}

int64_t count_of(const Registration& registration, const std::string& name) {
    const auto& calls = registration.plugin.registration_calls;
    return std::count_if(calls.begin(), calls.end(), [&](const Call& call) { return call.name == name; });
}

/// Expects `name` to be the first call, apart from calls of `before`.
void expect_first(const Registration& registration, const char* name, const char* what, const std::string& before) {
    const auto& calls = registration.plugin.registration_calls;
    const auto is_other = [&](const Call& call) { return call.name != before; };
    const auto first = std::find_if(calls.begin(), calls.end(), is_other);
    if (count_of(registration, name) == 0)
        return fail("register.order", fmt::format("{} is not registered ({})", what, name), kOrder);
    if (first->name != name)
        fail("register.order", fmt::format("{} comes before {}", stage::to_string(*first), name), kOrder);
}

/// Parameters, buttons and info texts share one set of names; events have another.
void check_names(const Registration& registration, bool events) {
    std::map<std::string, std::string> first_calls;
    for (const Call& call : registration.plugin.registration_calls) {
        const bool is_named =
            is_parameter(call) || call.name == "pelRegisterPushButton" || call.name == "pelRegisterInfoText";
        if (events ? call.name != "pelRegisterEvent" : !is_named) continue;
        const auto [first, is_new] = first_calls.emplace(text_of(call, 0), call.name);
        if (!is_new)
            fail("register.once",
                 fmt::format("the name '{}' is given in {} and again in {}", first->first, first->second, call.name),
                 "a name of its own for each");
    }
}

/// Well-formed UTF-8 without control characters.
bool is_readable_text(const std::string& text) {
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t'; };
    try {
        (void)nlohmann::json(text).dump();  // throws for malformed UTF-8
    } catch (const nlohmann::json::exception&) {
        return false;
    }
    return std::none_of(text.begin(), text.end(), is_control);
}

void check_text(const std::string& where, const std::string& text) {
    if (!is_readable_text(text))
        fail("register.values", where + " is no readable UTF-8 text", "UTF-8 without control characters");
}

void check_texts(const Registration& registration) {
    for (const stage::NullText& null : registration.null_texts) {
        const Call& call = registration.plugin.registration_calls[null.call];
        fail("register.values",
             fmt::format("{} has a null pointer as argument {}", stage::to_string(call), null.argument + 1),
             "a text; \"\" for none");
    }
    for (const Call& call : registration.plugin.registration_calls)
        for (size_t i = 0; i < call.arguments.size(); ++i)
            if (std::holds_alternative<std::string>(call.arguments[i]))
                check_text(fmt::format("argument {} of {} ('{}')", i + 1, call.name, text_of(call, 0)),
                           text_of(call, i));
}

void check_numbers(const Call& call) {
    if (call.name != "pelRegisterParameterInt" && call.name != "pelRegisterParameterFloat") return;
    const double initial = std::get<double>(call.arguments[2]);
    const double minimum = std::get<double>(call.arguments[3]);
    const double maximum = std::get<double>(call.arguments[4]);
    const std::string what = fmt::format("'{}' ({} to {}, default {})", text_of(call, 0), minimum, maximum, initial);
    if (std::isnan(initial) || std::isnan(minimum) || std::isnan(maximum))
        return fail("register.values", what + " is not a number", "numbers");
    if (minimum > maximum)
        return fail("register.values", what + " has its limits in the wrong order", "the lower one first");
    if (initial < minimum || initial > maximum)
        return fail("register.values", what + " has a default outside of its range", "a default inside");
    if (minimum == maximum) found("register.values", Weight::kWarning, what + " can have one value only", "a range");
    if (std::isinf(minimum) || std::isinf(maximum))
        found("register.values", Weight::kWarning, what + " has no finite range", "limits that a user can set");
}

void check_choices(const ParameterInfo& parameter, const Call& call) {
    const auto& choices = parameter.choices;
    if (choices.empty())
        return fail("register.values", fmt::format("'{}' has no choices", parameter.name),
                    "a list that a null pointer closes");
    const double initial = std::get<double>(call.arguments[2]);
    if (initial < 0 || initial >= static_cast<double>(choices.size()))
        fail("register.values",
             fmt::format("'{}' has default {} of {} choices", parameter.name, initial, choices.size()),
             fmt::format("0 to {}", choices.size() - 1));
    if (choices.size() > kMostChoices)
        fail("register.values", fmt::format("'{}' has {} choices", parameter.name, choices.size()),
             "a list that a null pointer closes");
    std::set<std::string> texts;
    for (const std::string& choice : choices) {
        check_text(fmt::format("a choice of '{}'", parameter.name), choice);
        if (choice.empty())
            fail("register.values", fmt::format("'{}' has a choice without text", parameter.name), "a text for each");
        if (!texts.insert(choice).second)
            fail("register.values", fmt::format("'{}' has the choice '{}' twice", parameter.name, choice),
                 "each choice once");
    }
}

void check_string(const ParameterInfo& parameter, const Call& call) {
    if (parameter.max_length < 1)
        return fail("register.values",
                    fmt::format("'{}' has a longest length of {} bytes", parameter.name, parameter.max_length),
                    "at least 1");
    if (parameter.max_length > (1 << 24))
        fail("register.values",
             fmt::format("'{}' has a longest length of {} bytes", parameter.name, parameter.max_length),
             "at most 16 MiB");
    const std::string initial = text_of(call, 2);
    if (initial.size() > static_cast<size_t>(parameter.max_length))
        fail("register.values",
             fmt::format("'{}' has a default of {} bytes, and a longest length of {}", parameter.name, initial.size(),
                         parameter.max_length),
             "a default that fits");
    if (parameter.columns < 1)
        found("register.values", Weight::kWarning,
              fmt::format("'{}' has a field of {} columns", parameter.name, parameter.columns), "at least 1");
    if (std::get<double>(call.arguments[5]) != 0)
        fail("register.values", fmt::format("'{}' has flags {}", parameter.name, std::get<double>(call.arguments[5])),
             "flags 0");
}

void check_parameter(const ParameterInfo& parameter, const Call& call) {
    if (parameter.name.empty())
        fail("register.values", fmt::format("parameter {} has no name", parameter.index), "a name");
    if (text_of(call, 1).empty())
        found("register.values", Weight::kWarning, fmt::format("'{}' has no label", parameter.name),
              "a label for the user");
    check_numbers(call);
    if (parameter.kind == ParameterKind::kRadio) check_choices(parameter, call);
    if (parameter.kind == ParameterKind::kString) check_string(parameter, call);
    if (parameter.kind == ParameterKind::kBool && std::get<double>(call.arguments[2]) != 0 &&
        std::get<double>(call.arguments[2]) != 1)
        found("register.values", Weight::kWarning,
              fmt::format("'{}' has default {}", parameter.name, std::get<double>(call.arguments[2])), "0 or 1");
}

void check_flag(const Call& call) {
    if (call.name != "pelRegisterUseLOD" && call.name != "pelRegisterUseEvents") return;
    const double flag = std::get<double>(call.arguments[0]);
    if (flag != 0 && flag != 1) fail("register.values", stage::to_string(call) + " is no switch", "0 or 1");
}

void check_events(const stage::Plugin& plugin) {
    if (!plugin.events.empty() && !plugin.uses_events)
        fail("register.values",
             fmt::format("registers {} events without pelRegisterUseEvents(1)", plugin.events.size()),
             "pelRegisterUseEvents(1)");
    if (plugin.events.empty() && plugin.uses_events)
        found("register.values", Weight::kWarning, "says that it uses events and registers none",
              "pelRegisterUseEvents(0)");
    for (const stage::ProfilingEvent& event : plugin.events) {
        if (event.name.empty()) fail("register.values", "registers an event without a name", "a name");
        if (event.flags != 0)
            fail("register.values", fmt::format("registers the event '{}' with flags {}", event.name, event.flags),
                 "flags 0");
    }
}

}  // namespace

void check_load_init(const Subject& subject) {
    const auto registered = register_subject(subject);
    if (!registered) return;
    const RunningCode running("PLUGIN_INIT");
    if (registered->init_returned != 0)
        fail("load.init", fmt::format("PLUGIN_INIT returned {}", registered->init_returned), "return 0");
    if (registered->plugin.registration_calls.empty())
        fail("load.init", "PLUGIN_INIT registers nothing", "name, type, parameters and size");
}

void check_register_order(const Subject& subject) {
    const auto registered = register_subject(subject);
    if (!registered) return;
    expect_first(*registered, "pelRegisterPlugin", "the name", "");
    expect_first(*registered, "pelRegisterPluginType", "the type", "pelRegisterPlugin");
    if (!registered->problems.empty() || registered->init_returned != 0) return;
    if (registered->plugin.total_size > kMostBytes) return;
    // Runs an instance, since it may register too late. Its other faults are findings of life.cycle.
    SharedOutcome& outcome = *watch().outcome;
    const bool lived = run_in_grandchild([&] {
        alarm(1);
        const auto rig = make_rig(subject);
        tour(*rig, {2, 2, false, false, {}});
    });
    if (lived) return;
    outcome.ending = Ending::kNone;
    outcome.frame_count = 0;
    outcome.running[0] = '\0';
}

void check_register_once(const Subject& subject) {
    const auto registered = register_subject(subject);
    if (!registered) return;
    for (const char* call : {"pelRegisterPlugin", "pelRegisterPluginType", "pelRegisterTotalSize", "pelRegisterUseLOD",
                             "pelRegisterUseEvents"})
        if (const int64_t times = count_of(*registered, call); times > 1)
            fail("register.once", fmt::format("{} is called {} times", call, times), "once");
    check_names(*registered, false);
    check_names(*registered, true);
    std::map<int32_t, std::string> actions;
    for (const stage::PushButton& button : registered->plugin.buttons)
        if (const auto [place, is_new] = actions.emplace(button.action, button.name); !is_new)
            found(
                "register.once", Weight::kWarning,
                fmt::format("the buttons '{}' and '{}' both have action {}", place->second, button.name, button.action),
                "a number for each");
}

void check_register_values(const Subject& subject) {
    const auto registered = register_subject(subject);
    if (!registered) return;
    const stage::Plugin& plugin = registered->plugin;
    if (count_of(*registered, "pelRegisterPlugin") > 0 && plugin.name.empty())
        fail("register.values", "its name is empty", "a name");
    if (count_of(*registered, "pelRegisterPluginType") > 0 && plugin.type != 1)
        fail("register.values", fmt::format("its type is {}", plugin.type), "1, a geometry");
    check_texts(*registered);
    size_t index = 0;
    for (const Call& call : plugin.registration_calls) {
        check_flag(call);
        if (is_parameter(call)) check_parameter(plugin.parameters[index++], call);
        if (call.name == "pelRegisterPushButton" && text_of(call, 0).empty())
            fail("register.values", "registers a button without a name", "a name");
    }
    check_events(plugin);
}

void check_register_size(const Subject& subject) {
    const auto registered = register_subject(subject);
    if (!registered) return;
    const stage::Plugin& plugin = registered->plugin;
    const auto slots = static_cast<int64_t>(plugin.parameters.size());
    if (registered->sizes_given == 0)
        return fail("register.size", "the size of an instance is not registered",
                    "pelRegisterTotalSize(sizeof the block)");
    if (plugin.total_size < 4 * slots)
        return fail("register.size",
                    fmt::format("a block of {} bytes cannot hold {} slots of 4 bytes", plugin.total_size, slots),
                    "the size of the whole block, slots included");
    if (plugin.total_size < 1)
        return fail("register.size", fmt::format("a block of {} bytes", plugin.total_size), "at least 1");
    if (plugin.total_size > kMostBytes)
        fail("register.size", fmt::format("a block of {} bytes for each instance", plugin.total_size),
             "what an instance needs; large tables belong on the heap");
}

}  // namespace tovu::validate
