# 32-bit x86 Linux, built with Debian's cross compiler g++-i686-linux-gnu. It includes its own C library, so that no
# packages of a foreign architecture are needed. Unlike g++-multilib it can be installed together with the cross
# compilers of other processors.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

# Programs use the dynamic loader and the libraries of the cross compiler, so that they run without other 32-bit
# libraries. --disable-new-dtags sets RPATH instead of RUNPATH, since it also applies to libraries of loaded plug-ins.
set(i686_libraries /usr/i686-linux-gnu/lib)
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--dynamic-linker=${i686_libraries}/ld-linux.so.2 -Wl,-rpath,${i686_libraries} -Wl,--disable-new-dtags")
