// Scene objects: handles by name or number, placement, reports of changes, and requests to other plug-ins.
#include <fmt/format.h>
#include <tovu/host_services.h>

#include "serve.h"
#include "stage/plugins/entry_point_call.h"

namespace stage {
namespace {

int32_t local_object(const Service& service, const char* name, int32_t type) {
    if (service.stage.running.empty()) {
        service.complain("there are no local objects: no entry point of an instance is running");
        return kNoObject;
    }
    const Instance& instance = *service.stage.running.back().instance;
    const std::string_view wanted = text_of(name);
    if (wanted == "GEOM" && type == TOVU_OBJECT_GEOMETRY) return instance.geometry_handle;
    if (wanted.empty() && type == TOVU_OBJECT_CONTAINER) return instance.container_handle;
    service.complain(fmt::format("an instance has no object '{}' of type {}", wanted, type));
    return kNoObject;
}

int32_t named_object(const Service& service, const char* name, const char* sub_name, int32_t type) {
    if (type == TOVU_OBJECT_CONTAINER && *text_of(sub_name) == '\0')
        return find_container_by_name(service.stage, text_of(name));
    service.complain(
        fmt::format("objects with sub-name '{}' and type {} have no names; containers have, with '' and {}",
                    text_of(sub_name), type, int{TOVU_OBJECT_CONTAINER}));
    return kNoObject;
}

int32_t numbered_object(const Service& service, int32_t number) {
    return find_object_by_number(service.stage, number);
}

int32_t validity(const Service& service, int32_t object) {
    return is_alive(service.stage, object) ? 1 : 0;
}

void geometry_changed(const Service& service, int32_t handle) {
    if (Geometry* geometry = service.geometry(handle)) ++geometry->changed_count;
}

void position(const Service& service, int32_t handle, float* x, float* y, float* z) {
    if (!service.container(handle)) return;
    const Matrix matrix = world_matrix(service.stage, handle);
    service.put(x, y, z, Vector3{matrix[12], matrix[13], matrix[14]});
}

void rotation(const Service& service, int32_t handle, float* x, float* y, float* z) {
    if (service.container(handle)) service.put(x, y, z, rotation_degrees_of(world_matrix(service.stage, handle)));
}

void scaling(const Service& service, int32_t handle, float* x, float* y, float* z) {
    if (service.container(handle)) service.put(x, y, z, scaling_of(world_matrix(service.stage, handle)));
}

void transformation(const Service& service, int32_t handle, float* matrix) {
    if (service.container(handle)) service.put_matrix(matrix, world_matrix(service.stage, handle));
}

// A container with a scale of 0 has no inverse; the answer is the identity.
void inverse_transformation(const Service& service, int32_t handle, float* matrix) {
    if (service.container(handle))
        service.put_matrix(matrix, inverse(world_matrix(service.stage, handle)).value_or(kIdentity));
}

void bounding_box(const Service& service, int32_t handle, float min_x, float min_y, float min_z, float max_x,
                  float max_y, float max_z) {
    if (service.container(handle))
        find_container(service.stage, handle)->bounding_box = BoundingBox{{min_x, min_y, min_z}, {max_x, max_y, max_z}};
}

void carried_geometry(const Service& service, int32_t handle, int32_t* geometry) {
    if (const Container* container = service.container(handle)) service.put(geometry, container->geometry_handle);
}

int32_t pass_on(const Service& service, int32_t handle, int32_t request, void* data, void* reply) {
    const Geometry* geometry = service.geometry(handle);
    if (!geometry || !geometry->instance) return 0;
    return dispatch(service.stage, geometry->container_handle, request, data, reply) ? 1 : 0;
}

}  // namespace
}  // namespace stage

using namespace stage;

int32_t _api__get_objectid_local(const char* name, int32_t type) {
    return serve<kNoObject>(__func__, &Overrides::get_objectid_local, local_object, name, type);
}

int32_t _api__get_objectid(const char* name, const char* sub_name, int32_t type) {
    return serve<kNoObject>(__func__, &Overrides::get_objectid, named_object, name, sub_name, type);
}

int32_t _api__get_objectid_from_objectid(int32_t number) {
    return serve<kNoObject>(__func__, &Overrides::get_objectid_from_objectid, numbered_object, number);
}

int32_t _api__object_valid(int32_t object) {
    return serve(__func__, &Overrides::object_valid, validity, object);
}

void _api__set_geom_changed(int32_t geometry) {
    serve(__func__, &Overrides::set_geom_changed, geometry_changed, geometry);
}

void _api__container_get_absolute_position(int32_t container, float* x, float* y, float* z) {
    serve(__func__, &Overrides::container_get_absolute_position, position, container, x, y, z);
}

void _api__container_get_absolute_rotation(int32_t container, float* x, float* y, float* z) {
    serve(__func__, &Overrides::container_get_absolute_rotation, rotation, container, x, y, z);
}

void _api__container_get_absolute_scaling(int32_t container, float* x, float* y, float* z) {
    serve(__func__, &Overrides::container_get_absolute_scaling, scaling, container, x, y, z);
}

void _api__container_get_transformation_matrix(int32_t container, float* matrix) {
    serve(__func__, &Overrides::container_get_transformation_matrix, transformation, container, matrix);
}

void _api__container_get_inverse_matrix(int32_t container, float* matrix) {
    serve(__func__, &Overrides::container_get_inverse_matrix, inverse_transformation, container, matrix);
}

void _api__container_set_bounding_box(int32_t container, float min_x, float min_y, float min_z, float max_x,
                                      float max_y, float max_z) {
    serve(__func__, &Overrides::container_set_bounding_box, bounding_box, container, min_x, min_y, min_z, max_x, max_y,
          max_z);
}

void _api__container_get_geometry(int32_t container, int32_t* geometry) {
    serve(__func__, &Overrides::container_get_geometry, carried_geometry, container, geometry);
}

int32_t _api__geom_dispatcher(int32_t geometry, int32_t request, void* data, void* reply) {
    return serve(__func__, &Overrides::geom_dispatcher, pass_on, geometry, request, data, reply);
}
