# Writes a header with the commit of the source tree, unless its content is unchanged.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND sh ${source}/cmake/commit.sh OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE)
file(CONFIGURE OUTPUT ${header} CONTENT "#define TOVU_COMMIT \"@commit@\"\n" @ONLY)
