# The headers that hosts and plug-ins share, as the target TovuSmoke::sdk. They are included as <tovu/…>, in this tree
# and in an installed one. Here they are links in a folder of their own, so that no other header can be included.
set(TOVU_SDK_HEADERS
  entry_points.h exchange.h host_services.h opengl.h parameter_slots.h particle_record.h spawn_requests.h vector3.h)
set(TOVU_SDK_SOURCE_DIR ${PROJECT_SOURCE_DIR}/Plugins/Geom/TovuSmoke/host)
set(TOVU_SDK_INCLUDE_DIR ${PROJECT_BINARY_DIR}/sdk/include)
file(MAKE_DIRECTORY ${TOVU_SDK_INCLUDE_DIR}/tovu)
foreach(header IN LISTS TOVU_SDK_HEADERS)
  file(CREATE_LINK ${TOVU_SDK_SOURCE_DIR}/${header} ${TOVU_SDK_INCLUDE_DIR}/tovu/${header} SYMBOLIC)
endforeach()

add_library(tovu_sdk INTERFACE)
add_library(TovuSmoke::sdk ALIAS tovu_sdk)
set_target_properties(tovu_sdk PROPERTIES EXPORT_NAME sdk)
target_include_directories(tovu_sdk INTERFACE $<BUILD_INTERFACE:${TOVU_SDK_INCLUDE_DIR}> $<INSTALL_INTERFACE:include>)
