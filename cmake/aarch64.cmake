# Toolchain for Linux on 64-bit ARM, on Debian: packages g++-aarch64-linux-gnu and, to run what is built, qemu-user.
# ORBEL_SYSROOT is a folder with Debian of that architecture, whose libraries the programs need: scripts/release/arm64_root.sh.
# Without it there are the compiler's own libraries, enough for the library and the module.
set(ORBEL_SYSROOT "" CACHE PATH "Root of a 64-bit ARM Debian with the libraries that the programs need")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORBEL_SYSROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(root /usr/aarch64-linux-gnu)
if(ORBEL_SYSROOT)
  set(root ${ORBEL_SYSROOT})
  set(CMAKE_SYSROOT ${root})
  set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
  set(ENV{PKG_CONFIG_SYSROOT_DIR} ${root})
  set(ENV{PKG_CONFIG_LIBDIR} ${root}/usr/lib/aarch64-linux-gnu/pkgconfig:${root}/usr/share/pkgconfig)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${root})

set(CMAKE_FIND_ROOT_PATH ${root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
