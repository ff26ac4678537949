# What cmake --install puts where, by component, and the Debian packages that cpack -G DEB makes of it:
# orbel: the program, its presets and the plug-in module; liborbel-dev: the front door, a shared library, for other
# programs; libband-equalizer-dev: the toolkit behind it, a static library.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ORBEL_MODULE_DESTINATION ${CMAKE_INSTALL_LIBDIR}/orbel)
set(ORBEL_PRESETS_DESTINATION ${CMAKE_INSTALL_DATADIR}/orbel/presets)

# By which other projects find a library: files for CMake and pkg-config.
function(orbel_install_library name component)
  set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
  install(EXPORT ${name} FILE ${name}Targets.cmake NAMESPACE ${name}:: DESTINATION ${config_folder}
    COMPONENT ${component})
  configure_package_config_file(cmake/${name}Config.cmake.in ${name}Config.cmake INSTALL_DESTINATION ${config_folder})
  write_basic_package_version_file(${name}ConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}Config.cmake ${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
    DESTINATION ${config_folder} COMPONENT ${component})

  # Relative, so that the files may be moved as a whole.
  set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_folder} /)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_folder} COMPONENT ${component})
endfunction()

# After all targets are there: a function, because the destinations above are needed before.
function(orbel_install)
  # First of all, or the first file that is missing would be named without a reason.
  string(CONFIGURE [[
    foreach(file "$<TARGET_FILE:orbel>" "$<TARGET_FILE:OrbelBandEqualizer>" "$<TARGET_FILE:band_equalizer>" "$<TARGET_FILE:orbel_shared>"
        "@CMAKE_BINARY_DIR@/orbel.1" "@CMAKE_BINARY_DIR@/orbel.bash" "@CMAKE_BINARY_DIR@/_orbel"
        "@CMAKE_BINARY_DIR@/orbel.fish")
      if(NOT EXISTS "${file}")
        message(FATAL_ERROR "This build is not complete, ${file} is missing. First build all of it:\n"
          "  cmake --build @CMAKE_BINARY_DIR@")
      endif()
    endforeach()]] whole_build @ONLY)
  install(CODE "${whole_build}" ALL_COMPONENTS)

  install(TARGETS orbel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT orbel)
  install(DIRECTORY tools/presets/ DESTINATION ${ORBEL_PRESETS_DESTINATION} COMPONENT orbel FILES_MATCHING PATTERN *.toml)
  install(FILES ${CMAKE_BINARY_DIR}/orbel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT orbel)
  install(FILES ${CMAKE_BINARY_DIR}/orbel.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME orbel COMPONENT orbel)
  install(FILES ${CMAKE_BINARY_DIR}/_orbel DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT orbel)
  install(FILES ${CMAKE_BINARY_DIR}/orbel.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
    COMPONENT orbel)
  install(TARGETS OrbelBandEqualizer LIBRARY DESTINATION ${ORBEL_MODULE_DESTINATION} COMPONENT module)

  install(TARGETS orbel_shared EXPORT orbel
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT door
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT door)
  orbel_install_library(orbel door)
  install(TARGETS band_equalizer EXPORT band_equalizer
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/band_equalizer COMPONENT dev)
  orbel_install_library(band_equalizer dev)

  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/liborbel-dev RENAME copyright COMPONENT door)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orbel RENAME copyright COMPONENT orbel)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libband-equalizer-dev RENAME copyright COMPONENT dev)
endfunction()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Orbel Band Equalizer maintainers <orbel@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL orbel module door dev)
set(CPACK_COMPONENT_ORBEL_GROUP orbel)
set(CPACK_COMPONENT_MODULE_GROUP orbel)
set(CPACK_COMPONENT_DOOR_GROUP door)
set(CPACK_COMPONENT_DEV_GROUP dev)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ORBEL_PACKAGE_NAME orbel)
set(CPACK_DEBIAN_ORBEL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_ORBEL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_ORBEL_PACKAGE_RECOMMENDS libimage-exiftool-perl)
set(CPACK_DEBIAN_ORBEL_DESCRIPTION
  "equalizer for the detail in photographs\n"
  "Takes pictures apart into five bands of detail and a residual, weighs each, and\n"
  "puts them together again: one file or thousands, with presets.")
string(JOIN "" CPACK_DEBIAN_ORBEL_DESCRIPTION ${CPACK_DEBIAN_ORBEL_DESCRIPTION})
set(CPACK_DEBIAN_DOOR_PACKAGE_NAME liborbel-dev)
set(CPACK_DEBIAN_DOOR_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DOOR_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DOOR_DESCRIPTION
  "equalizer for the detail in photographs: library\n"
  "The engine for other programs, in C, with files for CMake and pkg-config.")
string(JOIN "" CPACK_DEBIAN_DOOR_DESCRIPTION ${CPACK_DEBIAN_DOOR_DESCRIPTION})
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libband-equalizer-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS g++)
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "equalizer for the detail in photographs: static library\n"
  "The band equalizer and its image toolkit for other programs, with files for CMake\n"
  "and pkg-config.")
string(JOIN "" CPACK_DEBIAN_DEV_DESCRIPTION ${CPACK_DEBIAN_DEV_DESCRIPTION})
include(CPack)
