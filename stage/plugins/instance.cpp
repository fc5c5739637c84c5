#include "instance.h"

#include <fmt/format.h>

#include "entry_point_call.h"
#include "instance_memory.h"
#include "parameter_values.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

Result<Done> write_values(Instance& instance, const ParameterValues& values) {
    const Plugin& owner = plugin(instance.plugin);
    for (const auto& [name, value] : values) {
        const ParameterInfo* parameter = find_parameter(owner, name);
        if (!parameter) return unknown_parameter(owner, name);
        const auto encoded = encode_value(*parameter, value);
        if (!encoded) return encoded.error();
        write_value(instance, *parameter, *encoded);
    }
    return Done{};
}

Result<std::unique_ptr<Instance>> make_instance(const Stage& stage, const Container& container, PluginId owner,
                                                const ParameterValues& values) {
    const auto refuse = [&](const std::string& reason) {
        return Error{fmt::format("container '{}': {}", container.name, reason)};
    };
    if (owner < 0 || static_cast<size_t>(owner) >= loaded_plugins().size())
        return refuse(fmt::format("{} is not the number of a loaded plug-in", owner));
    auto instance = std::make_unique<Instance>();
    instance->plugin = owner;
    instance->container_handle = container.handle;
    if (!allocate_memory(*instance, stage.options.memory)) return refuse("no memory below 4 GiB is left for its texts");
    if (const auto written = write_values(*instance, values); !written) return refuse(written.error().message);
    seed_stream(instance->random, stage.options.seed, container.name);
    return instance;
}

void clean_up(Stage& stage, Instance& instance) {
    call_entry_point(stage, instance, "PLUGIN_CLEANUP_FUNCTION", &EntryPoints::cleanup_function);
}

}  // namespace

Result<int32_t> add_instance(Stage& stage, int32_t container_handle, PluginId owner, const ParameterValues& values) {
    Container* container = find_container(stage, container_handle);
    if (!container) return Error{fmt::format("{} is not the handle of a container", container_handle)};
    Result<std::unique_ptr<Instance>> made = make_instance(stage, *container, owner, values);
    if (!made) return made.error();
    if (container->geometry_handle != kNoObject && !remove_geometry(stage, container_handle))
        return Error{fmt::format("container '{}': its plug-in is running", container->name)};
    const int32_t handle = new_handle(stage, ObjectKind::kGeometry);
    if (handle == kNoObject) return Error{fmt::format("container '{}': all object numbers are used", container->name)};
    Geometry& geometry = stage.geometries[handle];
    geometry.handle = handle;
    geometry.container_handle = container_handle;
    geometry.instance = std::move(*made);
    geometry.instance->geometry_handle = handle;
    geometry.clean_up = clean_up;
    container->geometry_handle = handle;
    stage.instance_handles.push_back(handle);
    call_entry_point(stage, *geometry.instance, "PLUGIN_INIT_FUNCTION", &EntryPoints::init_function);
    return handle;
}

const Instance* instance_of(const Stage& stage, int32_t container_handle) {
    const Geometry* geometry = geometry_of(stage, container_handle);
    return geometry ? geometry->instance.get() : nullptr;
}

Instance* instance_of(Stage& stage, int32_t container_handle) {
    return const_cast<Instance*>(instance_of(std::as_const(stage), container_handle));
}

bool dispatch(Stage& stage, int32_t container_handle, int32_t request, void* data, void* reply) {
    Instance* instance = instance_of(stage, container_handle);
    if (!instance) return false;
    call_entry_point(stage, *instance, "PLUGIN_DISPATCHER_CALLBACK", &EntryPoints::dispatcher_callback, request, data,
                     reply);
    return true;
}

}  // namespace stage
