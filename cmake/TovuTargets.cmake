# Settings of all targets.
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
# The build tree can be moved, and programs do not depend on its name.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Contraction to fused multiply-add is off, so that all compilers round in the same way and builds agree to the bit.
# 32-bit x86 uses SSE for the same reason: the x87 unit computes with excess precision.
add_compile_options(-ffp-contract=off)
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "x86|i.86|AMD64")
  add_compile_options(-msse2 -mfpmath=sse)
endif()

# Warnings are errors in the project's own code. Headers of libraries are system headers and give no warnings.
add_library(tovu_warnings INTERFACE)
target_compile_options(tovu_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# -Wrestrict of g++ 12 gives false warnings for the concatenation of std::string.
target_compile_options(tovu_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# "commit.h" with TOVU_COMMIT for a target. Each build looks the commit up, so that programs and reports name their own.
add_custom_target(tovu_commit BYPRODUCTS ${PROJECT_BINARY_DIR}/generated/commit.h
  COMMAND ${CMAKE_COMMAND} -D source=${PROJECT_SOURCE_DIR} -D header=${PROJECT_BINARY_DIR}/generated/commit.h
    -P ${CMAKE_CURRENT_LIST_DIR}/write_commit.cmake)
function(tovu_has_commit target)
  add_dependencies(${target} tovu_commit)
  target_include_directories(${target} PRIVATE ${PROJECT_BINARY_DIR}/generated)
endfunction()

# Link-time optimisation of the product. Tests are built without it.
function(tovu_optimise target)
  if(TOVU_LTO)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
endfunction()

# A plug-in library of this tree: a module in plugins/ of the build tree that exports its entry points only.
include(TovuPlugin)
function(tovu_plugin target)
  tovu_export_entry_points(${target})
  set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/plugins)
endfunction()
