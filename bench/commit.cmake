# Writes a header with the commit of the source tree, unless its content is unchanged.
cmake_minimum_required(VERSION 3.25)
set(commit unknown)
execute_process(COMMAND git describe --always --dirty --abbrev=12 WORKING_DIRECTORY ${source}
  OUTPUT_VARIABLE described OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
if(NOT failed)
  set(commit ${described})
endif()
file(CONFIGURE OUTPUT ${header} CONTENT "#define TOVU_BENCH_COMMIT \"@commit@\"\n" @ONLY)
