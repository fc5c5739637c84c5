# 64-bit ARM Linux, built with Debian's cross compiler g++-aarch64-linux-gnu, which includes its own C library. On other
# processors programs run with QEMU (qemu-user-static), which reads that library in place of the system's.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L /usr/aarch64-linux-gnu)
