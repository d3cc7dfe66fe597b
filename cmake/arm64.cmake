# Builds for arm64 with the distribution's cross compiler, against the libraries in the root folder
# that WEXELXI_ARM64_ROOT names, and runs the tests under qemu-user. CONTRIBUTING.md tells how to
# make the root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(root $ENV{WEXELXI_ARM64_ROOT})
set(CMAKE_SYSROOT ${root})
set(behind -Wl,-rpath-link,${root}/usr/lib/aarch64-linux-gnu:${root}/lib/aarch64-linux-gnu)
set(CMAKE_EXE_LINKER_FLAGS_INIT ${behind})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64;-L;${root})
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${root})
set(ENV{PKG_CONFIG_LIBDIR} ${root}/usr/lib/aarch64-linux-gnu/pkgconfig:${root}/usr/share/pkgconfig)
