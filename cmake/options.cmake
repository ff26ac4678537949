# Settings that hold for all of our own code.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# For the loops. Builds that are there to be tested take half the time at -O1. Assertions stay on: they are cheap where
# we use them.
set(ORBEL_OPTIMISATION "-O3" CACHE STRING "How far the compiler optimises")
set(CMAKE_CXX_FLAGS_RELEASE "${ORBEL_OPTIMISATION}")

option(ORBEL_SANITIZE "Build with the address and undefined behaviour sanitizers" OFF)

find_package(Threads REQUIRED)

add_library(orbel_options INTERFACE)
target_include_directories(orbel_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(orbel_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast> -Wundef -Werror
  # The order of operations that the code gives defines every result: a * b + c is two roundings everywhere.
  -ffp-contract=off
  # errno after sqrt is nobody's business; with it no compiler vectorises one. Changes no value.
  -fno-math-errno
  # Nobody reads the exception flags either; with them g++ makes no vector code of a choice between floats, but on
  # AVX-512. Changes no value.
  -fno-trapping-math
  # A unique symbol would pin the module in the host's process for good.
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
if(EMSCRIPTEN)
  target_compile_options(orbel_options INTERFACE -msimd128 -mnontrapping-fptoint -fwasm-exceptions
    # Addresses have 32 bits there. Offsets are counted in 64 everywhere, and what is in memory fits into fewer.
    -Wno-shorten-64-to-32 -Wno-sign-conversion)
  target_link_options(orbel_options INTERFACE -fwasm-exceptions)
endif()
option(ORBEL_FUZZ "Build the fuzz target, with the sanitizers (clang only)" OFF)
if(ORBEL_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "ORBEL_FUZZ needs clang++")
  endif()
  set(ORBEL_SANITIZE ON)
  # Conversions of floats that no integer can hold are not in the undefined group.
  target_compile_options(orbel_options INTERFACE -fsanitize=fuzzer-no-link,float-cast-overflow)
endif()
if(ORBEL_SANITIZE)
  target_compile_options(orbel_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  target_compile_definitions(orbel_options INTERFACE ORBEL_SANITIZED)
  target_link_options(orbel_options INTERFACE -fsanitize=address,undefined)
endif()
