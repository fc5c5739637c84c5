# Rules of `cmake --install`, by component. SDK: the headers, the CMake package, the pkg-config file and samples. Plugins:
# the plug-in's library. Command: the command line with the Stage, sample plug-ins, looks and scenes. Studio: the studio, if
# it has been built; it needs Command. Docs: documents.
# The Stage finds plug-ins, looks and scenes beside the folder of its own library, lib/tovu/lib.
include(CMakePackageConfigHelpers)
set(TOVU_PACKAGE_DIR lib/cmake/TovuSmoke)

list(TRANSFORM TOVU_SDK_FILES PREPEND ${TOVU_SDK_SOURCE_DIR}/ OUTPUT_VARIABLE sdk_files)
install(FILES ${sdk_files} ${TOVU_SDK_INCLUDE_DIR}/tovu/host_functions.def DESTINATION include/tovu COMPONENT SDK)

install(TARGETS tovu_sdk EXPORT TovuSmokeTargets COMPONENT SDK)
install(EXPORT TovuSmokeTargets NAMESPACE TovuSmoke:: DESTINATION ${TOVU_PACKAGE_DIR} COMPONENT SDK)
file(WRITE ${PROJECT_BINARY_DIR}/TovuSmokeConfig.cmake
  "include(\${CMAKE_CURRENT_LIST_DIR}/TovuSmokeTargets.cmake)\ninclude(\${CMAKE_CURRENT_LIST_DIR}/TovuPlugin.cmake)\n"
  "set(TOVU_WINDOWS_IMPORTS \${CMAKE_CURRENT_LIST_DIR}/../../../include/tovu/windows_imports.c)\n")
# The SDK contains no binaries, so that one installation serves 64-bit and 32-bit builds.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TovuSmokeConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES
  ${PROJECT_BINARY_DIR}/TovuSmokeConfig.cmake ${PROJECT_BINARY_DIR}/TovuSmokeConfigVersion.cmake
  ${PROJECT_SOURCE_DIR}/cmake/TovuPlugin.cmake ${PROJECT_SOURCE_DIR}/cmake/plugin_exports.map
  DESTINATION ${TOVU_PACKAGE_DIR} COMPONENT SDK)

configure_file(${PROJECT_SOURCE_DIR}/cmake/tovusmoke.pc.in ${PROJECT_BINARY_DIR}/tovusmoke.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tovusmoke.pc DESTINATION share/pkgconfig COMPONENT SDK)

# The files in each sample folder, but not samples/CMakeLists.txt itself.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples/ DESTINATION share/tovu/samples COMPONENT SDK
  FILES_MATCHING REGEX "/samples/[^/]+/[^/]+$" PATTERN "faulty" EXCLUDE)

# As in the source tree, so that the links of README.md hold; without the files that pictures are made from.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION share/doc/tovu COMPONENT Docs
  PATTERN "digests.txt" EXCLUDE PATTERN "*.py" EXCLUDE PATTERN "scenes" EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION share/doc/tovu COMPONENT Docs)

install(TARGETS TovuSmoke LIBRARY DESTINATION lib/tovu/plugins COMPONENT Plugins)
install(FILES ${PROJECT_SOURCE_DIR}/Plugins/Geom/TovuSmoke/TovuSmoke.toml
  ${PROJECT_SOURCE_DIR}/Plugins/Geom/TovuSmoke/TovuSmoke.fields DESTINATION lib/tovu/plugins COMPONENT Plugins)

if(TARGET tovu)
  set_target_properties(tovu PROPERTIES INSTALL_RPATH "\$ORIGIN/../lib/tovu/lib")
  set_target_properties(tovu_stage PROPERTIES INSTALL_RPATH "\$ORIGIN")
  install(TARGETS tovu RUNTIME COMPONENT Command)
  install(TARGETS tovu_stage tovu_stage_core LIBRARY DESTINATION lib/tovu/lib COMPONENT Command)
  install(TARGETS TovuGather TovuSpiral LIBRARY DESTINATION lib/tovu/plugins COMPONENT Command)
  # The scripts that `tovu bake` runs, and no others.
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/looks/ DESTINATION lib/tovu/looks COMPONENT Command
    FILES_MATCHING PATTERN "*.png" PATTERN "*.toml" REGEX "/make/(arrows|bake|fields|title|winds)\\.py$")
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/scenes/ DESTINATION lib/tovu/scenes COMPONENT Command
    FILES_MATCHING PATTERN "*.toml" REGEX "/assets/.*\\.(png|jpg|obj)$")
endif()
if(TARGET tovu_studio)
  set_target_properties(tovu_studio PROPERTIES INSTALL_RPATH "\$ORIGIN/../lib/tovu/lib")
  install(TARGETS tovu_studio RUNTIME COMPONENT Studio OPTIONAL)
endif()
