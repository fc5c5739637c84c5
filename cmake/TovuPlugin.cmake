# Functions that build a plug-in, in this source tree or with an installed SDK.
set(TOVU_PLUGIN_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/plugin_exports.map)
set(TOVU_PLUGIN_SUFFIX .so)
if(WIN32)
  set(TOVU_PLUGIN_SUFFIX .dll)
endif()

# Makes a library export the eight entry points only, in unoptimised builds too, and names its file <target>.so, on
# Windows <target>.dll. Host functions stay undefined: the process that loads the library provides them. Windows has no
# undefined functions in libraries; there windows_imports.c finds them when the library is loaded.
function(tovu_export_entry_points target)
  set_target_properties(${target} PROPERTIES
    PREFIX "" SUFFIX ${TOVU_PLUGIN_SUFFIX}
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS ${TOVU_PLUGIN_EXPORTS})
  target_link_options(${target} PRIVATE -Wl,--version-script=${TOVU_PLUGIN_EXPORTS})
  if(WIN32)
    get_property(languages GLOBAL PROPERTY ENABLED_LANGUAGES)
    if(NOT C IN_LIST languages)
      set_source_files_properties(${TOVU_WINDOWS_IMPORTS} PROPERTIES LANGUAGE CXX)
    endif()
    # Its assembly names variables, which link-time optimisation would rename.
    set_source_files_properties(${TOVU_WINDOWS_IMPORTS} PROPERTIES COMPILE_OPTIONS -fno-lto)
    target_sources(${target} PRIVATE ${TOVU_WINDOWS_IMPORTS})
    # Needs no library of the compiler; two builds have the same bytes.
    target_link_options(${target} PRIVATE -static -static-libgcc -Wl,--no-insert-timestamp)
  endif()
endfunction()

# A plug-in library <name>.so or <name>.dll from C or C++ sources: tovu_add_plugin(name source…)
function(tovu_add_plugin name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE TovuSmoke::sdk)
  tovu_export_entry_points(${name})
endfunction()
