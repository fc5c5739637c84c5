#include "plugin.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <tovu/entry_points.h>

#include <algorithm>
#include <filesystem>

#include "plugin_code.h"
#include "registration.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

std::vector<std::unique_ptr<Plugin>> the_plugins;  // for the whole process, shared by all Stages

// The C library declares that dlopen throws nothing. A library's constructors may throw, and a compiler that knows
// which function it is drops what would end the process then.
void* (*volatile open_library)(const char* file, int flags) = dlopen;

struct CloseLibrary {
    void operator()(void* library) const { dlclose(library); }
};
using LibraryPtr = std::unique_ptr<void, CloseLibrary>;

template <class Function>
void resolve(void* library, const char* name, Function& function, std::vector<std::string>& missing) {
    void* symbol = dlsym(library, name);
    if (!symbol) missing.push_back(name);
    function = reinterpret_cast<Function>(symbol);
}

/// Finds all eight; returns the names of those that are missing.
std::vector<std::string> resolve_entry_points(void* library, EntryPoints& found) {
    static_assert(std::is_convertible_v<decltype(&PLUGIN_INIT), decltype(found.init)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_INIT_FUNCTION), decltype(found.init_function)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_CLEANUP_FUNCTION), decltype(found.cleanup_function)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_CHANGED_CALLBACK), decltype(found.changed_callback)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_EXEC_ACTION), decltype(found.exec_action)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_NEW_GEOM), decltype(found.new_geom)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_RENDER_OPENGL), decltype(found.render_opengl)>);
    static_assert(std::is_convertible_v<decltype(&PLUGIN_DISPATCHER_CALLBACK), decltype(found.dispatcher_callback)>);
    std::vector<std::string> missing;
    resolve(library, "PLUGIN_INIT", found.init, missing);
    resolve(library, "PLUGIN_INIT_FUNCTION", found.init_function, missing);
    resolve(library, "PLUGIN_CLEANUP_FUNCTION", found.cleanup_function, missing);
    resolve(library, "PLUGIN_CHANGED_CALLBACK", found.changed_callback, missing);
    resolve(library, "PLUGIN_EXEC_ACTION", found.exec_action, missing);
    resolve(library, "PLUGIN_NEW_GEOM", found.new_geom, missing);
    resolve(library, "PLUGIN_RENDER_OPENGL", found.render_opengl, missing);
    resolve(library, "PLUGIN_DISPATCHER_CALLBACK", found.dispatcher_callback, missing);
    return missing;
}

/// Runs PLUGIN_INIT; returns what was wrong.
std::vector<std::string> register_plugin(Stage& stage, Registration& registration) {
    Stage* previous = current_stage();
    make_current(&stage);
    set_running_registration(&registration);
    int32_t returned = 0;
    {
        const PluginCode code("PLUGIN_INIT", registration.plugin.path.c_str(), nullptr, 0);
        returned = registration.init_returned = call_plugin(registration.plugin.entry_points.init);
    }
    set_running_registration(nullptr);
    make_current(previous);
    std::vector<std::string> problems = find_problems(registration);
    if (returned != 0) problems.push_back(fmt::format("PLUGIN_INIT returned {}; 0 is right", returned));
    for (const auto& other : the_plugins)
        if (other->name == registration.plugin.name)
            problems.push_back(fmt::format("its name '{}' is that of {}, loaded before", other->name, other->path));
    return problems;
}

Result<Registration> run_registration(Stage& stage, const std::string& path, void* library) {
    Registration registration;
    registration.plugin.path = path;
    if (const auto missing = resolve_entry_points(library, registration.plugin.entry_points); !missing.empty())
        return Error{fmt::format("{}: not a plug-in: it does not export {}", path, fmt::join(missing, ", "))};
    registration.problems = register_plugin(stage, registration);
    return registration;
}

}  // namespace

const char* to_string(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::kInt:
            return "Int";
        case ParameterKind::kFloat:
            return "Float";
        case ParameterKind::kBool:
            return "Bool";
        case ParameterKind::kRadio:
            return "Radio";
        case ParameterKind::kString:
            return "String";
        case ParameterKind::kContainer:
            return "Container";
        case ParameterKind::kImage:
            return "Image";
    }
    return "";
}

Result<PluginId> load_plugin(Stage& stage, const std::string& path) {
    const PluginCode loading("loading", path.c_str(), nullptr, 0);  // a refused library is closed while it lives
    // A bare name would be searched for among the system's libraries.
    const std::string file = std::filesystem::absolute(path);
    LibraryPtr library(call_plugin([&] { return open_library(file.c_str(), RTLD_NOW | RTLD_LOCAL); }));
    if (!library) return Error{fmt::format("{}: not a plug-in library: {}", path, dlerror())};
    for (size_t i = 0; i < the_plugins.size(); ++i)
        if (the_plugins[i]->library == library.get()) return static_cast<PluginId>(i);

    Result<Registration> registered = run_registration(stage, path, library.get());
    if (!registered) return registered.error();
    if (const auto& problems = registered->problems; !problems.empty())
        return Error{fmt::format("{}: {}", path, fmt::join(problems, fmt::format("\n{}: ", path)))};
    registered->plugin.library = library.release();
    the_plugins.push_back(std::make_unique<Plugin>(std::move(registered->plugin)));
    return static_cast<PluginId>(the_plugins.size() - 1);
}

Result<Registration> try_plugin(Stage& stage, const std::string& path) {
    void* library = open_library(std::filesystem::absolute(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) return Error{dlerror()};
    return run_registration(stage, path, library);
}

const std::vector<std::unique_ptr<Plugin>>& loaded_plugins() {
    return the_plugins;
}

const Plugin& plugin(PluginId id) {
    return *the_plugins.at(static_cast<size_t>(id));
}

const ParameterInfo* find_parameter(const Plugin& plugin, std::string_view name) {
    const auto found = std::find_if(plugin.parameters.begin(), plugin.parameters.end(),
                                    [&](const ParameterInfo& parameter) { return parameter.name == name; });
    return found == plugin.parameters.end() ? nullptr : &*found;
}

const PushButton* find_button(const Plugin& plugin, std::string_view name) {
    const auto found = std::find_if(plugin.buttons.begin(), plugin.buttons.end(),
                                    [&](const PushButton& button) { return button.name == name; });
    return found == plugin.buttons.end() ? nullptr : &*found;
}

}  // namespace stage
