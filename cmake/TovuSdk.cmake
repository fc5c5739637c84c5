# What hosts and plug-ins share, as the target TovuSmoke::sdk: headers, and what plug-ins need on Windows. They are
# included as <tovu/…>, in this tree and in an installed one. Here they are links in a folder of their own, so that no
# other header can be included.
set(TOVU_SDK_FILES
  entry_points.h exchange.h host_services.h opengl.h parameter_slots.h particle_record.h spawn_requests.h vector3.h
  windows_imports.c)
set(TOVU_SDK_SOURCE_DIR ${PROJECT_SOURCE_DIR}/Plugins/Geom/TovuSmoke/host)
set(TOVU_SDK_INCLUDE_DIR ${PROJECT_BINARY_DIR}/sdk/include)
file(MAKE_DIRECTORY ${TOVU_SDK_INCLUDE_DIR}/tovu)
foreach(file IN LISTS TOVU_SDK_FILES)
  file(CREATE_LINK ${TOVU_SDK_SOURCE_DIR}/${file} ${TOVU_SDK_INCLUDE_DIR}/tovu/${file} SYMBOLIC)
endforeach()
set(TOVU_WINDOWS_IMPORTS ${TOVU_SDK_INCLUDE_DIR}/tovu/windows_imports.c)

# The functions that plug-ins import, HOST_FUNCTION(name) for each that the headers declare.
set(host_functions)
foreach(header host_services.h opengl.h)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${TOVU_SDK_SOURCE_DIR}/${header})
  file(READ ${TOVU_SDK_SOURCE_DIR}/${header} text)
  string(REGEX MATCHALL "\n[a-z0-9_]+ (pel|_api__|ormixGL_)[A-Za-z0-9_]+\\(" declarations "${text}")
  list(TRANSFORM declarations REPLACE "\n[a-z0-9_]+ (.*)\\(" "HOST_FUNCTION(\\1)\n")
  list(APPEND host_functions ${declarations})
endforeach()
list(JOIN host_functions "" host_functions)
file(CONFIGURE OUTPUT ${TOVU_SDK_INCLUDE_DIR}/tovu/host_functions.def CONTENT "${host_functions}" @ONLY)

add_library(tovu_sdk INTERFACE)
add_library(TovuSmoke::sdk ALIAS tovu_sdk)
set_target_properties(tovu_sdk PROPERTIES EXPORT_NAME sdk)
target_include_directories(tovu_sdk INTERFACE $<BUILD_INTERFACE:${TOVU_SDK_INCLUDE_DIR}> $<INSTALL_INTERFACE:include>)
