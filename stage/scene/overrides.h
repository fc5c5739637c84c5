// For tests: functions that answer services instead of the Stage, which simulates a host with wrong answers.
#pragma once

#include <tovu/host_services.h>

#include <cstdint>
#include <functional>

namespace stage {

/// If a function is set, the service of that name calls it instead of answering itself; the call is recorded as usual.
/// The function is disabled while it runs, so that it can call the service for the Stage's own answer. It must not
/// assign its own field.
struct Overrides {
    std::function<decltype(_api__get_objectid_local)> get_objectid_local;
    std::function<decltype(_api__get_objectid)> get_objectid;
    std::function<decltype(_api__get_objectid_from_objectid)> get_objectid_from_objectid;
    std::function<decltype(_api__object_valid)> object_valid;
    std::function<decltype(_api__set_geom_changed)> set_geom_changed;
    std::function<decltype(_api__container_get_absolute_position)> container_get_absolute_position;
    std::function<decltype(_api__container_get_absolute_rotation)> container_get_absolute_rotation;
    std::function<decltype(_api__container_get_absolute_scaling)> container_get_absolute_scaling;
    std::function<decltype(_api__container_get_transformation_matrix)> container_get_transformation_matrix;
    std::function<decltype(_api__container_get_inverse_matrix)> container_get_inverse_matrix;
    std::function<decltype(_api__container_set_bounding_box)> container_set_bounding_box;
    std::function<decltype(_api__container_get_geometry)> container_get_geometry;
    std::function<decltype(_api__geom_dispatcher)> geom_dispatcher;

    std::function<decltype(_api__get_geom_detail)> get_geom_detail;
    std::function<decltype(_api__get_geom_geomod)> get_geom_geomod;
    std::function<decltype(_api__geomod_init)> geomod_init;
    std::function<decltype(_api__geomod_get_info)> geomod_get_info;
    std::function<decltype(_api__geomod_goto_mesh)> geomod_goto_mesh;
    std::function<decltype(_api__geomod_next_mesh)> geomod_next_mesh;
    std::function<decltype(_api__geomod_get_num_mesh_verices)> geomod_get_num_mesh_verices;
    std::function<decltype(_api__geomod_goto_vertex)> geomod_goto_vertex;
    std::function<decltype(_api__geomod_next_vertex)> geomod_next_vertex;
    std::function<decltype(_api__geomod_get_vertex)> geomod_get_vertex;

    std::function<decltype(_api__get_image_objectid)> get_image_objectid;
    std::function<decltype(_api__get_image_size)> get_image_size;
    std::function<decltype(_api__get_image_format)> get_image_format;
    std::function<decltype(_api__get_image_data)> get_image_data;

    std::function<decltype(_api__get_cameraid)> get_cameraid;
    std::function<decltype(_api__get_camera_pan)> get_camera_pan;
    std::function<decltype(_api__get_camera_tilt)> get_camera_tilt;
    std::function<decltype(_api__get_camera_view_matrix)> get_camera_view_matrix;
    std::function<decltype(_api__get_camera_position)> get_camera_position;
    std::function<decltype(_api__get_camera_direction)> get_camera_direction;
    std::function<decltype(_api__get_position)> get_position;

    std::function<decltype(_api__pellor_get_is_on_air)> is_on_air;
    std::function<decltype(_api__pellor_get_is_post_recording)> is_post_recording;
    std::function<decltype(_api__pellor_get_post_current_time)> post_current_time;
    std::function<decltype(_api__pellor_get_retrace_counter)> retrace_counter;
    std::function<decltype(_api__pellor_get_refreshrate)> refreshrate;
};

}  // namespace stage
