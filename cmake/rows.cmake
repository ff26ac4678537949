# Body files (*.body.cpp) are compiled once per row of the dispatch table, each row for its instruction set. Each row
# is: namespace, floats in a vector register, compiler options.

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
  set(ORBEL_ROWS n8_ y8_ e9_ l9_ k0_)
  set(n8__LANES 4)
  set(n8__OPTIONS -msse2)
  set(y8__LANES 4)
  set(y8__OPTIONS -msse4.2)
  set(e9__LANES 8)
  set(e9__OPTIONS -mavx)
  set(l9__LANES 8)
  set(l9__OPTIONS -mavx2 -mfma -mbmi -mbmi2)
  set(k0__LANES 16)
  set(k0__OPTIONS -mavx2 -mfma -mbmi -mbmi2 -mavx512f -mavx512cd -mavx512bw -mavx512dq -mavx512vl
    -mprefer-vector-width=512)
else()  # one row: NEON on 64-bit ARM, WebAssembly's vectors in the browser
  set(ORBEL_ROWS n8_)
  set(n8__LANES 4)
  set(n8__OPTIONS)
endif()

# The same for the code: primitives/rows.h.
list(LENGTH ORBEL_ROWS ORBEL_ROW_COUNT)
set(ORBEL_NAMESPACES)
foreach(row IN LISTS ORBEL_ROWS)
  string(APPEND ORBEL_NAMESPACES "\\\n  namespace ${row} { declaration; } ")
endforeach()
list(TRANSFORM ORBEL_ROWS REPLACE "(.+)" "&\\1::name" OUTPUT_VARIABLE ORBEL_ADDRESSES)
list(JOIN ORBEL_ADDRESSES ", " ORBEL_ADDRESSES)
configure_file(${PROJECT_SOURCE_DIR}/src/primitives/rows.h.in ${PROJECT_BINARY_DIR}/generated/primitives/rows.h @ONLY)
target_include_directories(orbel_options INTERFACE ${PROJECT_BINARY_DIR}/generated)

# Adds the body files to a library, once per row.
function(orbel_add_bodies library)
  foreach(row IN LISTS ORBEL_ROWS)
    set(objects ${library}_${row}bodies)
    add_library(${objects} OBJECT ${ARGN})
    target_compile_definitions(${objects} PRIVATE ROW=${row} LANES=${${row}_LANES})
    # Vectors wider than a register never cross a call, so their calling convention doesn't matter. Bodies raise no
    # exception, and the tables for one would leave a weak symbol.
    target_compile_options(${objects} PRIVATE ${${row}_OPTIONS} -Wno-psabi -fno-exceptions)
    target_link_libraries(${objects} PRIVATE orbel_options)
    target_sources(${library} PRIVATE $<TARGET_OBJECTS:${objects}>)
  endforeach()
endfunction()
