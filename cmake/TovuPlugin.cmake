# Functions that build a plug-in, in this source tree or with an installed SDK.
set(TOVU_PLUGIN_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/plugin_exports.map)

# Makes a library export the eight entry points only, in unoptimised builds too, and names its file <target>.so.
# Host functions stay undefined: the process that loads the library provides them.
function(tovu_export_entry_points target)
  set_target_properties(${target} PROPERTIES
    PREFIX "" SUFFIX ".so"
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS ${TOVU_PLUGIN_EXPORTS})
  target_link_options(${target} PRIVATE -Wl,--version-script=${TOVU_PLUGIN_EXPORTS})
endfunction()

# A plug-in library <name>.so from C or C++ sources: tovu_add_plugin(name source…)
function(tovu_add_plugin name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE TovuSmoke::sdk)
  tovu_export_entry_points(${name})
endfunction()
