# 32-bit x86 Linux, built by Debian's cross compiler g++-i686-linux-gnu, which brings its own C library: no packages of a
# foreign architecture, and unlike g++-multilib it can be installed beside the cross compilers of other processors.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

# Programs name the dynamic loader and the libraries that come with the compiler, so that they run where no other 32-bit
# libraries are installed. Old-style search paths also count for what the loaded plug-ins need.
set(i686_libraries /usr/i686-linux-gnu/lib)
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--dynamic-linker=${i686_libraries}/ld-linux.so.2 -Wl,-rpath,${i686_libraries} -Wl,--disable-new-dtags")
