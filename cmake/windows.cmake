# Toolchain for 64-bit Windows, on Debian: packages g++-mingw-w64-x86-64-posix and, to run what is built, wine64.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)  # of GoogleTest alone
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows aligns the stack to 16 bytes, and g++ doesn't always align it further for the vectors of 32 and 64 bytes that
# it keeps there (GCC bug 54412). So the assembler makes unaligned moves of all aligned ones; on a processor with AVX
# they are as fast. A test looks for aligned ones that are left.
set(CMAKE_CXX_FLAGS_INIT -Wa,-muse-unaligned-vector-move)

# The C++ runtime is linked in: what is built needs only the system's own DLLs.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/under_wine.sh)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
