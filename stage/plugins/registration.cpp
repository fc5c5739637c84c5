#include "registration.h"

#include <fmt/format.h>

#include "parameter_values.h"
#include "stage/scene/handles.h"

namespace stage {
namespace {

Registration* the_running_registration = nullptr;  // global, since services cannot receive it as an argument
int32_t last_event_number = 0;                     // in the whole process

void check_given_once(const char* what, const char* call, int times, std::vector<std::string>& problems) {
    if (times == 0) problems.push_back(fmt::format("{} is not registered ({})", what, call));
    if (times > 1) problems.push_back(fmt::format("{} is registered {} times ({}); once is right", what, times, call));
}

void check_total(const Plugin& plugin, std::vector<std::string>& problems) {
    const auto slots = static_cast<int64_t>(plugin.parameters.size());
    if (plugin.total_size < 4 * slots)
        problems.push_back(fmt::format("an instance of {} bytes is too small for {} parameter slots of 4 bytes",
                                       plugin.total_size, slots));
    else if (plugin.total_size < 1)
        problems.push_back("an instance of 0 bytes has no address of its own; at least 1 byte is right");
}

}  // namespace

Registration* running_registration() {
    return the_running_registration;
}

void set_running_registration(Registration* registration) {
    the_running_registration = registration;
}

void add_parameter(Registration& registration, ParameterInfo parameter) {
    Plugin& plugin = registration.plugin;
    parameter.index = static_cast<int32_t>(plugin.parameters.size());
    if (parameter.name.empty())
        registration.problems.push_back(fmt::format("parameter {} has no name", parameter.index));
    else if (find_parameter(plugin, parameter.name))
        registration.problems.push_back(fmt::format("parameter '{}' is registered twice", parameter.name));
    if (const auto fits = check_parameter(parameter, parameter.initial); !fits)
        registration.problems.push_back("its default does not fit: " + fits.error().message);
    plugin.parameters.push_back(std::move(parameter));
}

int32_t add_event(Registration& registration, std::string name, int32_t flags) {
    const int32_t handle = make_handle(ObjectKind::kEvent, ++last_event_number);
    registration.plugin.events.push_back({std::move(name), flags, handle});
    return handle;
}

std::vector<std::string> find_problems(const Registration& registration) {
    std::vector<std::string> problems = registration.problems;
    const Plugin& plugin = registration.plugin;
    check_given_once("its name", "pelRegisterPlugin", registration.names_given, problems);
    check_given_once("its type", "pelRegisterPluginType", registration.types_given, problems);
    check_given_once("its instance size", "pelRegisterTotalSize", registration.sizes_given, problems);
    if (registration.names_given == 1 && plugin.name.empty()) problems.push_back("its name is empty");
    if (registration.types_given == 1 && plugin.type != 1)
        problems.push_back(fmt::format("its type is {}; 1, a geometry, is right", plugin.type));
    if (registration.sizes_given == 1) check_total(plugin, problems);
    return problems;
}

}  // namespace stage
