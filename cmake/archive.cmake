# The target archive: what people copy to their machines, with scripts, licence and the page that says where it goes.
# OrbelBandEqualizer-VERSION-linux-x64.tar.gz or OrbelBandEqualizer-VERSION-windows-x64.zip, in the build folder.
set(texts ${PROJECT_SOURCE_DIR}/docs/plug-in.md ${PROJECT_SOURCE_DIR}/LICENSE)
if(WIN32)
  set(archive OrbelBandEqualizer-${PROJECT_VERSION}-windows-x64)
  set(archive_file ${CMAKE_BINARY_DIR}/${archive}.zip)
  set(pack cf ${archive_file} --format=zip)
  # Of the runtimes that are linked in, winpthreads asks that its terms go along.
  configure_file(/usr/share/doc/mingw-w64-common/copyright ${CMAKE_BINARY_DIR}/LICENSE-runtimes COPYONLY)
  list(APPEND texts ${CMAKE_BINARY_DIR}/LICENSE-runtimes)
else()
  set(archive OrbelBandEqualizer-${PROJECT_VERSION}-linux-x64)
  set(archive_file ${CMAKE_BINARY_DIR}/${archive}.tar.gz)
  set(pack czf ${archive_file})
endif()
file(GLOB scripts CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/examples/photoshop/*.jsx)

set(folder ${CMAKE_BINARY_DIR}/archive/${archive})
add_custom_command(OUTPUT ${archive_file}
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${folder}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}/scripts
  COMMAND ${CMAKE_STRIP} $<TARGET_FILE:OrbelBandEqualizer> -o ${folder}/$<TARGET_FILE_NAME:OrbelBandEqualizer>
  COMMAND ${CMAKE_COMMAND} -E copy ${texts} ${folder}
  COMMAND ${CMAKE_COMMAND} -E copy ${scripts} ${folder}/scripts
  COMMAND ${CMAKE_COMMAND} -E chdir ${CMAKE_BINARY_DIR}/archive ${CMAKE_COMMAND} -E tar ${pack} ${archive}
  DEPENDS OrbelBandEqualizer ${texts} ${scripts} VERBATIM)
add_custom_target(archive ALL DEPENDS ${archive_file})
