# Cross build for the device (aarch64 Linux) with Debian's cross compilers
# (crossbuild-essential-arm64) and the arm64 multiarch -dev packages.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# Host tools (python, pkg-config) come from the host; libraries, headers and
# CMake package files from the arm64 multiarch folders, which CMake finds
# through the library architecture above.
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# Only the arm64 .pc files, never the host's.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")

# Test programs and test discovery run under qemu-user. The loader comes from
# the arm64 multiarch C library (libc6:arm64) so that it matches the libc.so
# found next to the other arm64 libraries: the cross sysroot's loader is a
# different build, and a loader and libc of different builds hang on fork.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /)
