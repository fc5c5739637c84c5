# What every target of the project has in common.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Without contraction every compiler rounds alike, so that builds agree to the bit. On 32-bit x86 the default unit keeps
# more digits than a float has; the vector unit does not.
add_compile_options(-ffp-contract=off)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i.86|AMD64")
  add_compile_options(-msse2 -mfpmath=sse)
endif()

# Warnings are errors in our own code. Headers of libraries are system headers and stay out of it.
add_library(tovu_warnings INTERFACE)
target_compile_options(tovu_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# g++ 12 sees overlapping copies in the standard library's own joining of texts where there are none.
target_compile_options(tovu_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# Link-time optimisation for the product; tests gain nothing from it.
function(tovu_optimise target)
  if(TOVU_LTO)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
endfunction()

# A plug-in library: a module under plugins/ in the build tree that exports its entry points and nothing else.
include(TovuPlugin)
function(tovu_plugin target)
  tovu_export_entry_points(${target})
  set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/plugins)
endfunction()
