#include "instance_operations.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "host/host_services.h"
#include "particles/curves.h"
#include "particles/instance_caches.h"
#include "particles/pool.h"
#include "particles/simulation_step.h"
#include "render/quad_arrays.h"

namespace tovu {
namespace {

constexpr float kMinWindRange = 0.001f;  // below it the wind image covers the spawn range

constexpr size_t kNameBytes = sizeof(SmokeInstance::saved_container_name);

// Longer names are cut to the size of the field, in the copy and in the comparison.
void save_name(char (&saved)[kNameBytes], const char* name) {
    std::strncpy(saved, name, kNameBytes - 1);
    saved[kNameBytes - 1] = '\0';
}

bool differs(const char (&saved)[kNameBytes], const char* name) {
    return std::strncmp(saved, name, kNameBytes - 1) != 0;
}

// A name that begins with '#' is an object number. A number beyond 32 bits is clamped to one that no object has.
int32_t container_named(const char* name) {
    if (name[0] != '#') return _api__get_objectid(name, "", TOVU_OBJECT_CONTAINER);
    const long number = std::strtol(name + 1, nullptr, 10);
    const long clamped = number > INT32_MAX ? INT32_MAX : number < INT32_MIN ? INT32_MIN : number;
    return _api__get_objectid_from_objectid(static_cast<int32_t>(clamped));
}

void rebuild_container_source(SmokeInstance& instance) {
    const char* name = param::spawn_cont_name(instance.parameters);
    if (name[0] == '\0') {
        set_container(instance.container_source, -1);
        return;
    }
    set_container(instance.container_source, container_named(name));
    save_name(instance.saved_container_name, name);
}

void rebuild_wind_source(SmokeInstance& instance) {
    const char* name = param::wind_image(instance.parameters);
    if (name[0] == '\0') return;  // the image in use stays
    load(instance.wind_source, _api__get_image_objectid(name));
    save_name(instance.saved_wind_image_name, name);
}

void rebuild_spawn_image_source(SmokeInstance& instance) {
    const char* name = param::spawn_image(instance.parameters);
    if (name[0] == '\0') return;
    const int32_t image_handle = _api__get_image_objectid(name);
    set_inversion_flag(instance.spawn_image_source, param::spawn_image_bool(instance.parameters) ? 0 : 1);
    load(instance.spawn_image_source, image_handle);
    save_name(instance.saved_spawn_image_name, name);
}

// Some hosts do not announce a changed name.
void pick_up_changed_names(SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    if (differs(instance.saved_container_name, param::spawn_cont_name(p))) rebuild_container_source(instance);
    if (differs(instance.saved_wind_image_name, param::wind_image(p))) rebuild_wind_source(instance);
    if (differs(instance.saved_spawn_image_name, param::spawn_image(p))) rebuild_spawn_image_source(instance);
}

void centre_rect(ImageSource& source, float range_x, float range_y) {
    set_rect(source, range_x * -0.5f, range_y * -0.5f, range_x * 0.5f, range_y * 0.5f);
}

void place_images(SmokeInstance& instance) {
    const ParameterSlots& p = instance.parameters;
    const float spawn_x = param::spawn_range_x(p);
    const float spawn_y = param::spawn_range_y(p);
    if (param::spawn_type(p) == kSpawnImage) centre_rect(instance.spawn_image_source, spawn_x, spawn_y);
    if (!param::use_wind_image(p)) return;
    const float wind_x = param::wind_image_range_x(p);
    const float wind_y = param::wind_image_range_y(p);
    if (wind_x >= kMinWindRange && wind_y >= kMinWindRange)
        centre_rect(instance.wind_source, wind_x, wind_y);
    else
        centre_rect(instance.wind_source, spawn_x, spawn_y);
}

}  // namespace

void initialise_instance(void* block) {
    const ParameterSlots slots = *static_cast<const ParameterSlots*>(block);
    SmokeInstance& instance = *new (block) SmokeInstance{};
    instance.parameters = slots;
    instance.container_handle = _api__get_objectid_local("", TOVU_OBJECT_CONTAINER);
    instance.geom_handle = _api__get_objectid_local("GEOM", TOVU_OBJECT_GEOMETRY);
    build_color_table(instance);
    build_alpha_table(instance);
    initialise_quad_arrays(instance);
    instance.caches = make_caches();
}

void clean_up_instance(SmokeInstance& instance) {
    release_particles(instance);
    release(instance.container_source);
    destroy_caches(instance.caches);
    instance.caches = nullptr;
}

void rebuild_frame(SmokeInstance& instance) {
    if (instance.step_under_way != 0) return;
    instance.step_under_way = 1;
    simulation_step(instance);
    instance.step_under_way = 0;
    pick_up_changed_names(instance);
    place_images(instance);  // after the step: a changed range takes effect in the next step
    _api__set_geom_changed(instance.geom_handle);
}

void parameter_changed(SmokeInstance& instance, int32_t parameter_index) {
    switch (parameter_index) {
        case kIndex_alpha_curve:
            build_alpha_table(instance);
            break;
        case kIndex_color:
            build_color_table(instance);
            break;
        case kIndex_spawn_cont_name:
            rebuild_container_source(instance);
            break;
        case kIndex_wind_image:
            rebuild_wind_source(instance);
            break;
        case kIndex_spawn_image:
        case kIndex_spawn_image_bool:
            rebuild_spawn_image_source(instance);
            break;
        default:
            break;  // read afresh where it is used
    }
}

void execute_action(SmokeInstance& instance, int32_t action) {
    switch (action) {
        case kActionReset:
            reset_particles(instance);
            break;
        case kActionBuildAlpha:
            build_alpha_text(instance);
            break;
        default:
            break;
    }
}

}  // namespace tovu
