// Questions to the host about objects, with every out value set before the call.
#pragma once

#include <tovu/host_services.h>

#include <charconv>
#include <cstring>

namespace gather {

/// The container with this name, or with the number behind a '#'; -1 without one.
inline int32_t container_named(const char* name) {
    if (*name == '\0') return -1;
    int32_t container_handle = -1;
    if (*name == '#') {
        int32_t number = -1;  // stays so where there is none, or none of 32 bits
        std::from_chars(name + 1, name + std::strlen(name), number);
        container_handle = _api__get_objectid_from_objectid(number);
    } else {
        container_handle = _api__get_objectid(name, "", TOVU_OBJECT_CONTAINER);
    }
    return _api__object_valid(container_handle) ? container_handle : -1;
}

/// What the container carries, or -1.
inline int32_t geometry_of(int32_t container_handle) {
    int32_t geometry_handle = -1;
    _api__container_get_geometry(container_handle, &geometry_handle);
    return _api__object_valid(geometry_handle) ? geometry_handle : -1;
}

}  // namespace gather
